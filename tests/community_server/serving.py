"""What the tests of the whole server share: one that runs on a free port, and a client that asks as the program does."""

import http.client
import os
import re
import subprocess
import tempfile
import unittest
import urllib.parse
from pathlib import Path

ORDER = """<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>ControlSurfaceParameterOrder</key><array>%s</array></dict></plist>
"""


def mapping(*names):
    """The bytes of a mapping of parameters with these names."""
    escaped = (name.replace("&", "&amp;").replace("<", "&lt;") for name in names)
    return (ORDER % "".join(f"<string>{number} {name}</string>" for number, name in enumerate(escaped))).encode()


def escaped(text):
    return urllib.parse.quote(text, safe="&=?/+:")


class Serving(unittest.TestCase):
    """A server for all tests of the class, with `options` of its own."""

    options = ()

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.data = cls.folder / "data"
        cls.server = subprocess.Popen([os.environ["KV_SERVER"], "--port", "0", "--data", cls.data, *cls.options],
                                      stdout=subprocess.PIPE, text=True)
        cls.addClassCleanup(cls.end)
        cls.address = cls.server.stdout.readline().strip()
        cls.port = int(re.match(r"http://127\.0\.0\.1:(\d+)/", cls.address)[1])

    @classmethod
    def end(cls):
        cls.server.terminate()
        cls.server.communicate(timeout=20)

    def connection(self):
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=20)

    def ask(self, method, target, body=b"", headers=None, connection=None):
        """Status, headers and text of a reply."""
        connection = connection or self.connection()
        connection.request(method, target, body, headers or {})
        reply = connection.getresponse()
        text = reply.read().decode()
        connection.close()
        return reply.status, reply.headers, text

    def post(self, target, **more):
        return self.ask("POST", target, **more)[2]

    def log_in(self, user, prefix=""):
        said = self.post(f"{prefix}/checkuserexists.php?userName={escaped(user)}&emailAddr=ada@example.org")
        pin = re.search(r"PIN is (\d{6})", said)
        self.assertIsNotNone(pin, said)
        self.assertEqual(self.post(f"{prefix}/checkuser.php?userName={escaped(user)}&pinCode={pin[1]}"), "\nOK\n")
        return pin[1]

    @staticmethod
    def form(file):
        """Body and headers of an upload."""
        body = (b"\r\n--edge\r\nContent-Disposition: form-data; name=\"userfile\"; filename=\"CSParameterOrder.plist\"\r\n"
                b"Content-Type: application/octet-stream\r\n\r\n" + file + b"\r\n--edge--\r\n")
        return {"body": body, "headers": {"Content-Type": "multipart/form-data; boundary=edge"}}

    def share(self, user, plugin, comments, file):
        said = self.post(f"/kv_upload.php?user={escaped(user)}&plugin={escaped(plugin)}&comments={escaped(comments)}",
                         **self.form(file))
        self.assertIn("is now shared", said)
