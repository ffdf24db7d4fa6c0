#!/usr/bin/env python3
"""What the community server takes for a large library, over loopback.

usage: community_server.py [--seconds N] PROGRAM    (build/release/bin/community_server)

Fills a library with 100,000 mappings, 10,000 of them for one plug-in, and prints how long a listing, a file and a log-in
take, how long listings take while 50 mappings a second are uploaded, and the memory. Ends with 1 where a figure is over
its limit. Takes two minutes and 300 MB in the temporary folder.
"""

import argparse
import hashlib
import http.client
import pathlib
import random
import re
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time

MAPPINGS, OF_ONE, OTHERS = 100_000, 10_000, 900
BOUNDARY = "-" * 27 + "14737809831466499882746641449"


def mapping(number):
    texts = "".join(f"\t\t<string>{i} Parameter {i} of {number}</string>\n" for i in range(16))
    return ('<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0">\n<dict>\n\t<key>ControlSurfaceParameterOrder'
            f"</key>\n\t<array>\n{texts}\t</array>\n</dict>\n</plist>\n").encode()


class Server:
    def __init__(self, program, data):
        self.process = subprocess.Popen(
            [program, "--port", "0", "--data", str(data), "--uploads-of-user", "1000000", "--uploads-of-address", "1000000"],
            stdout=subprocess.PIPE, text=True)
        self.port = int(re.search(r":(\d+)/", self.process.stdout.readline())[1])

    def ask(self, method, target, body=None, headers=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=30)
        connection.request(method, target, body, headers or {})
        reply = connection.getresponse().read()
        connection.close()
        return reply

    def upload(self, user, number):
        body = (f'\r\n--{BOUNDARY}\r\nContent-Disposition: form-data; name="userfile"; filename="CSParameterOrder.plist"'
                "\r\nContent-Type: application/octet-stream\r\n\r\n").encode() + mapping(number)
        return self.ask("POST", f"/kv_upload.php?user={user}&plugin=Plug-in%200&comments=upload%20{number}",
                        body + f"\r\n--{BOUNDARY}--\r\n".encode(),
                        {"Content-Type": f"multipart/form-data; boundary={BOUNDARY}"})

    def memory(self, what):
        return int(re.search(rf"{what}:\s+(\d+)", pathlib.Path(f"/proc/{self.process.pid}/status").read_text())[1]) / 1024

    def end(self):
        self.process.terminate()
        return self.process.wait()


def fill(data):
    database = sqlite3.connect(data / "library.sqlite")
    database.executemany("INSERT INTO account (name, nameKey, email, created) VALUES (?1, lower(?1), '', 0)",
                         [(f"Somebody {i}",) for i in range(1000)])
    for number in range(MAPPINGS):
        plugin = 0 if number < OF_ONE else 1 + number % OTHERS
        content = mapping(number)
        key = hashlib.sha256(content).digest()
        database.execute("INSERT INTO file VALUES (?, ?)", (key, content))
        database.execute("INSERT INTO mapping (plugin, account, comments, hash, fileName, uploaded) VALUES (?, ?, ?, ?, ?, ?)",
                         (f"Plug-in {plugin}", 1 + number % 1000, f"What is worth knowing of mapping {number}. " * 5, key,
                          f"{number:032x}.plist", 1_700_000_000_000 + number))
    database.commit()
    database.close()


def milliseconds(work):
    start = time.perf_counter()
    work()
    return (time.perf_counter() - start) * 1000


class Figures:
    def __init__(self):
        self.are_within = True

    def tell(self, what, times, limit):
        times = sorted(times)
        median, worst = times[len(times) // 2], times[-1]
        self.show(what, f"median {median:.1f} ms, longest {worst:.1f} ms", median <= limit, f"{limit} ms")

    def show(self, what, text, is_within, limit):
        self.are_within &= is_within
        print(f"{what}: {text}; at most {limit}{'' if is_within else '   OVER'}", flush=True)


def upload_for(server, seconds, user):
    """Uploads 50 mappings a second, and returns how long each of these and of the listings meanwhile took."""
    uploads, listings, problems = [], [], []
    start = time.perf_counter()

    def sharer(first):
        for number in range(first, 50 * seconds, 10):
            time.sleep(max(0, start + number / 50 - time.perf_counter()))
            replies = []
            uploads.append(milliseconds(lambda: replies.append(server.upload(user, MAPPINGS + number))))
            if b"now shared" not in replies[0]:
                problems.append(replies[0])

    def reader():
        while time.perf_counter() - start < seconds:
            listings.append(milliseconds(lambda: server.ask("POST", "/kv_listplists.php?plugin=Plug-in%200")))
            time.sleep(0.1)

    threads = [threading.Thread(target=sharer, args=(i,)) for i in range(10)]
    threads += [threading.Thread(target=reader) for _ in range(2)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return uploads, listings, problems, time.perf_counter() - start


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=int, default=60, help="how long mappings are uploaded")
    parser.add_argument("program")
    options = parser.parse_args()
    figures = Figures()
    with tempfile.TemporaryDirectory() as folder:
        data = pathlib.Path(folder)
        Server(options.program, data).end()
        fill(data)
        server = Server(options.program, data)
        pin = re.search(rb"\d{6}", server.ask("POST", "/checkuserexists.php?userName=Ada&emailAddr=a@b"))[0].decode()
        log_in = lambda: server.ask("POST", f"/checkuser.php?userName=Ada&pinCode={pin}")
        if log_in() != b"\nOK\n":
            sys.exit("cannot log in")
        idle = server.memory("VmRSS")
        figures.tell(f"listing of {OF_ONE:,} mappings",
                     [milliseconds(lambda: server.ask("POST", "/kv_listplists.php?plugin=Plug-in%200")) for _ in range(100)], 50)
        numbers = random.Random(1).sample(range(MAPPINGS), 500)
        figures.tell("file", [milliseconds(lambda n=n: server.ask("GET", f"/files/{n:032x}.plist")) for n in numbers], 2)
        figures.tell("log-in", [milliseconds(log_in) for _ in range(20)], 150)
        uploads, listings, problems, seconds = upload_for(server, options.seconds, "Ada")
        rate = len(uploads) / seconds
        figures.show("uploads", f"{rate:.0f} a second for {seconds:.0f} s, {len(problems)} refused", rate >= 49 and not problems,
                     "none refused of 50 a second")
        figures.tell("an upload meanwhile", uploads, 100)
        figures.tell("a listing meanwhile", listings, 100)
        worst = sorted(listings)[int(len(listings) * 0.99)]
        figures.show("99 of 100 listings meanwhile", f"{worst:.1f} ms", worst <= 100, "100 ms")
        peak = server.memory("VmHWM")
        figures.show("memory", f"{idle:.0f} MiB after a log-in, {peak:.0f} MiB at most", peak <= 100, "100 MiB")
        server.end()
    sys.exit(0 if figures.are_within else 1)


if __name__ == "__main__":
    main()
