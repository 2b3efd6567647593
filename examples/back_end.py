#!/usr/bin/python3
"""A back end: a form that sets an address, and says in a sentence what became of it.

   vorsim & examples/back_end.py 8080
"""
import contextlib
import html
import http.server
import sys
import threading
import urllib.parse

import device_mgmt

PAGE = """<!doctype html><html lang="en"><title>Address</title><form method="post">
<label>Address <input name="address"></label> <label>Mask <input name="mask" value="255.255.255.0"></label>
<button>Set</button></form><p>{}</p></html>"""
one_at_a_time = threading.Lock()  # a process has one endpoint


def set_address(address: str, mask: str) -> str:
    try:
        with one_at_a_time, device_mgmt.Gateway(sap=200) as gateway:
            gateway.ip.set_ip_address(interface_number=0, ip_address=address, subnet_mask=mask, config_option=1)
    except ValueError as error:
        return f"Nothing was sent: {error}."
    except device_mgmt.Refused as error:
        return f"The gateway refused the address, with status {error.status}."
    except device_mgmt.NotSent as error:
        print(error, file=sys.stderr)
        return "Nothing was sent: there is no way to the gateway's managers now."
    except device_mgmt.Unknown:
        return "It is unknown whether the gateway has this address. Try to reach it at this one and the one before."
    return f"The gateway accepted {address}."


class Form(http.server.BaseHTTPRequestHandler):
    timeout = 10  # seconds for a client that sends nothing

    def handle(self) -> None:
        with contextlib.suppress(ConnectionError):  # of a client that hangs up
            super().handle()

    def do_GET(self) -> None:
        self.answer(200, "")

    def do_POST(self) -> None:
        # a page of another site can send the form here, too, and have a name that leads here
        host = self.headers["Host"]
        if host not in hosts or self.headers["Origin"] not in (None, f"http://{host}"):
            return self.answer(403, "This form was not sent from this page.")
        length = self.headers.get("Content-Length", "")
        if not length.isdecimal() or len(length) > 3:
            return self.answer(413, "This is no address.")
        given = dict(urllib.parse.parse_qsl(self.rfile.read(int(length)).decode(errors="replace")))
        self.answer(200, set_address(given.get("address", ""), given.get("mask", "")))

    def answer(self, status: int, sentence: str) -> None:
        self.send_response(status)
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.send_header("Content-Security-Policy", "default-src 'none'; form-action 'self'; frame-ancestors 'none'")
        self.end_headers()
        self.wfile.write(PAGE.format(html.escape(sentence)).encode())


server = http.server.ThreadingHTTPServer(("127.0.0.1", int(sys.argv[1])), Form)
hosts = [f"{name}:{server.server_port}" for name in ("127.0.0.1", "localhost")]
print(f"http://{hosts[0]}/", flush=True)
server.serve_forever()
