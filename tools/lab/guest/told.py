#!/usr/bin/env python3
"""What the complete answer tells a person to do about its most urgent finding, a line each:

    told.py [PLACEHOLDER=WHAT]... <ANSWER

"why WORDS", "show COMMAND NAMES", "mend COMMAND" of its causes, in the answer's order, then "how
COMMAND" of the advice for all machines; tabs between. NAMES are those of the parts, of which the
command must show one. WHAT takes a placeholder's place.
"""
import json
import sys

NAMES = ("name", "device", "path", "mount_point", "serial")
placeholders = [argument.split("=", 1) for argument in sys.argv[1:]]
answer = json.load(sys.stdin)


def command(kind, text, names=""):
    for placeholder, what in placeholders:
        text = text.replace(placeholder, what)
    print(kind, text, names, sep="\t")


def names(parts):
    known = [part for part in answer["parts"] if part["name"] in parts]
    # LVM calls its mapping "lab-mirror" the volume "mirror" of the group "lab", and a pool's
    # "lab-pool-tpool" just "pool".
    own = [part["name"].removesuffix("-tpool").rsplit("-", 1)[-1] for part in known]
    return ",".join(own + [part[name] for part in known for name in NAMES if part.get(name)])


for finding in answer["findings"][:1]:
    for cause in finding["why"]:
        print("why", " ".join(cause["text"]), sep="\t")
        if cause.get("show"):
            command("show", cause["show"], names(cause["parts"]))
        for mend in cause["mend"]:
            command("mend", mend)
    for how in finding["advice"]["how"]:
        command("how", how)
