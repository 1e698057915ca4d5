"""Real servers that a test starts, and ends with it."""
import random
import subprocess
import sys
import time
import urllib.error
import urllib.request


class Servers:
    def __enter__(self):
        self.started = []
        return self

    def start(self, *command, **options):
        self.started.append(subprocess.Popen(command, **options))
        return self.started[-1]

    def __exit__(self, *_):
        for server in self.started:
            server.kill()
            server.wait()


def own_address(port):
    """An address of the loopback that nobody else listens on: these servers take no port 0."""
    return f"127.{random.randint(2, 254)}.{random.randint(0, 254)}.{random.randint(1, 254)}:{port}"


def fetch(url, body=None):
    request = urllib.request.Request(url, body, {"Content-Type": "application/json"})
    with urllib.request.urlopen(request, timeout=60) as answer:
        return answer.read()


def eventually(what, holds, seen=lambda: ""):
    """Waits until it holds, also on a busy machine."""
    for _ in range(1500):
        try:
            if holds():
                return
        except urllib.error.URLError:
            pass
        time.sleep(0.2)
    sys.exit(f"{what}: never came about. {seen()}")
