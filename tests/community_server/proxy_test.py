"""The library behind nginx, with the site that the package brings as an example."""

import http.client
import os
import shutil
import socket
import ssl
import subprocess
import time
import unittest
from pathlib import Path

from serving import Serving, mapping

NGINX = shutil.which("nginx", path="/usr/sbin:/usr/bin")
SITE = Path(__file__).parents[2] / "resources/linux/community/nginx.conf"
NAME = "library.example.org"
FRAME = """daemon off;
%(user)s
pid %(folder)s/pid;
events {}
http {
client_body_temp_path %(folder)s/body;
proxy_temp_path %(folder)s/proxy;
fastcgi_temp_path %(folder)s/fastcgi;
uwsgi_temp_path %(folder)s/uwsgi;
scgi_temp_path %(folder)s/scgi;
%(site)s
}
"""


def free_port():
    with socket.socket() as listening:
        listening.bind(("127.0.0.1", 0))
        return listening.getsockname()[1]


@unittest.skipUnless(NGINX and shutil.which("openssl"), "nginx or openssl is not here, so nothing is behind a proxy")
class BehindNginx(Serving):
    options = ("--behind-proxy", "yes", "--path-prefix", "/library", "--access-log", "-")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", f"/CN={NAME}",
                        "-addext", f"subjectAltName=DNS:{NAME}", "-keyout", cls.folder / "key.pem",
                        "-out", cls.folder / "certificate.pem"], check=True, capture_output=True)
        cls.plain, cls.secure = free_port(), free_port()
        site = SITE.read_text(encoding="utf-8")
        for there, here in {
            "listen 80;": f"listen 127.0.0.1:{cls.plain};",
            "listen [::]:80;": "",
            "listen 443 ": f"listen 127.0.0.1:{cls.secure} ",
            "listen [::]:443 ssl http2;": "",
            "127.0.0.1:8765": f"127.0.0.1:{cls.port}",
            f"/etc/letsencrypt/live/{NAME}/fullchain.pem": f"{cls.folder}/certificate.pem",
            f"/etc/letsencrypt/live/{NAME}/privkey.pem": f"{cls.folder}/key.pem",
            "/var/log/nginx/": f"{cls.folder}/",
        }.items():
            assert there in site, there
            site = site.replace(there, here)
        configuration = cls.folder / "nginx.conf"
        configuration.write_text(FRAME % {
            "folder": cls.folder, "site": site, "user": "user root;" if os.geteuid() == 0 else ""}, encoding="utf-8")
        # What it says at its start, before it has read where its log lies, is a log, too.
        cls.nginx = subprocess.Popen([NGINX, "-e", cls.folder / "error.log", "-c", configuration])
        cls.addClassCleanup(cls.end_nginx)
        for _ in range(200):
            with socket.socket() as client:
                if client.connect_ex(("127.0.0.1", cls.secure)) == 0:
                    return
            time.sleep(0.05)
        raise AssertionError("nginx does not listen")

    @classmethod
    def end_nginx(cls):
        cls.nginx.terminate()
        cls.nginx.wait(timeout=20)

    def connection(self, client="127.0.0.1"):
        """To nginx with TLS, from an address of this machine."""
        context = ssl.create_default_context(cafile=self.folder / "certificate.pem")
        connection = http.client.HTTPSConnection("127.0.0.1", self.secure, timeout=20)
        connection.connect = lambda: setattr(connection, "sock", context.wrap_socket(
            socket.create_connection(("127.0.0.1", self.secure), 20, (client, 0)), server_hostname=NAME))
        return connection

    def ask(self, method, target, body=b"", headers=None, connection=None):
        return super().ask(method, target, body, {"Host": NAME} | (headers or {}), connection)

    def test_sends_plain_requests_on_as_what_they_are(self):
        for method in ("GET", "POST"):
            target = "/library/checkuser.php?userName=A%20&%26+b&pinCode=1"
            plain = http.client.HTTPConnection("127.0.0.1", self.plain, timeout=20)
            status, headers, _ = self.ask(method, target, b"body", connection=plain)
            self.assertEqual((status, headers["Location"]), (308, f"https://{NAME}{target}"))

    def test_serves_the_program_and_people(self):
        self.log_in("Ada", "/library")
        file = mapping("Cutoff")
        said = self.post("/library/kv_upload.php?user=Ada&plugin=Drum%20&%20Bass&comments=nice%20&%20warm+dry%20%252B",
                         **self.form(file + b"\n" * (2 ** 20 - len(file))))
        self.assertEqual(said, "Thank you, Ada! Your mapping for Drum & Bass is now shared.")
        listing = self.post("/library/kv_listplists.php?plugin=Drum%20&%20Bass")
        self.assertIn('"userComments":"nice & warm+dry %2B"', listing)
        page = self.ask("GET", "/library/")[2]
        self.assertIn("Drum &amp; Bass", page)
        self.assertIn('href="style.css"', page)
        self.assertEqual(self.ask("GET", "/library/style.css")[0], 200)
        self.assertEqual(self.ask("GET", "/library")[1]["Location"], "/library/")

    def test_says_what_is_too_large_in_a_sentence(self):
        status, _, said = self.ask("POST", "/library/kv_upload.php?user=Ada&plugin=x&comments=", b"x" * (3 << 20))
        self.assertEqual((status, said), (413, "The file is too large, so it was not shared. A mapping has at most 1 MiB."))


@unittest.skipUnless(NGINX and shutil.which("openssl"), "nginx or openssl is not here, so nothing is behind a proxy")
class WhatIsLoggedBehindNginx(BehindNginx):
    test_sends_plain_requests_on_as_what_they_are = None
    test_serves_the_program_and_people = None
    test_says_what_is_too_large_in_a_sentence = None

    def test_is_the_client_s_own_address_and_no_pin(self):
        pin = self.log_in("Ada", "/library")
        self.ask("GET", "/library/healthz", headers={"X-Forwarded-For": "203.0.113.9"},
                 connection=self.connection("127.0.0.2"))
        self.server.terminate()
        logged = self.server.communicate(timeout=20)[0]
        self.assertRegex(logged, r'(?m)^127\.0\.0\.1 - - \[.*\] "POST /library/checkuser\.php HTTP/1\.1" 200 4$')
        self.assertRegex(logged, r'(?m)^127\.0\.0\.2 - - \[.*\] "GET /library/healthz HTTP/1\.1" 200 2$')
        # With the server away, nginx has an error to tell of.
        status, _, said = self.ask("POST", f"/library/checkuser.php?userName=Ada&pinCode={pin}")
        self.assertEqual((status, said), (503, "The library is away for a moment. Please try again in a few minutes."))
        logs = list(self.folder.glob("*.log"))
        self.assertTrue(logs)
        for text in [logged] + [log.read_text(encoding="utf-8") for log in logs]:
            self.assertNotIn(pin, text)
            self.assertNotIn("Ada", text)


if __name__ == "__main__":
    unittest.main()
