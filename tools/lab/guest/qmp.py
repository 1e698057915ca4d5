#!/usr/bin/env python3
"""Sends one command to the machine's own QEMU monitor: qmp.py NAME [key=value ...].

Prints the answer; status 1 when QEMU refused the command or did not answer within 5 s.
"""
import json
import os
import select
import sys


def lines(port):
    buffer = b''
    while select.select([port], [], [], 5)[0]:
        more = os.read(port, 65536)
        if not more:
            return
        buffer += more
        *whole, buffer = buffer.split(b'\n')
        yield from (json.loads(line) for line in whole)


def value(text):
    try:
        return json.loads(text)
    except ValueError:
        return text


def main():
    port = os.open('/dev/virtio-ports/qmp', os.O_RDWR)
    received = lines(port)

    def ask(name, arguments):
        os.write(port, json.dumps({'execute': name, 'arguments': arguments, 'id': name}).encode() + b'\n')
        return next((answer for answer in received if answer.get('id') == name), None)

    ask('qmp_capabilities', {})
    answer = ask(sys.argv[1], {key: value(text) for key, text in (a.split('=', 1) for a in sys.argv[2:])})
    print(json.dumps(answer))
    return 0 if answer and 'return' in answer else 1


sys.exit(main())
