"""examples/back_end.py: each outcome through its form, and hostile requests."""
from __future__ import annotations

import html
import http.client
import pathlib
import re
import socket
import struct
import subprocess
import sys
import threading
import urllib.parse
from typing import Iterator

import pytest

import device_mgmt
from device_mgmt.testing import Vorsim

PROGRAM = pathlib.Path(__file__).parents[2] / "examples/back_end.py"


@pytest.fixture
def host(vorsim: Vorsim) -> Iterator[str]:
    program = subprocess.Popen([sys.executable, str(PROGRAM), "0"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               text=True)
    assert program.stdout and program.stderr
    found = re.search("http://(.*)/", program.stdout.readline())
    assert found, program.stderr.read()
    yield found[1]
    program.terminate()
    assert "Traceback" not in program.communicate()[1]


def post(host: str, body: str, **headers: str) -> tuple[int, str]:
    """The status, and the sentence."""
    connection = http.client.HTTPConnection(host, timeout=20)
    connection.request("POST", "/", body.encode(), headers)
    answer = connection.getresponse()
    found = re.search("<p>(.*)</p>", answer.read().decode(), re.DOTALL)
    connection.close()
    return answer.status, html.unescape(found[1]) if found else ""


def set_address(host: str, address: str = "192.168.1.10") -> str:
    return post(host, urllib.parse.urlencode({"address": address, "mask": "255.255.255.0"}), Origin=f"http://{host}")[1]


def test_each_outcome_is_a_sentence(vorsim: Vorsim, host: str) -> None:
    assert set_address(host) == "The gateway accepted 192.168.1.10."
    vorsim.expect("ethmgr  *  interface 0: ip_address=192.168.1.10 subnet_mask=255.255.255.0 config_option=1")
    vorsim.fault("ethmgr: status 7, once")
    assert set_address(host) == "The gateway refused the address, with status 7."
    vorsim.fault("ethmgr: no payload, once")
    assert "is unknown whether" in set_address(host)
    vorsim.reset()
    with device_mgmt.Gateway(sap=200):
        assert "no way to the gateway's managers" in set_address(host)
    assert re.match("Nothing was sent: .*192.168.1.999", set_address(host, "192.168.1.999"))
    vorsim.expect()
    assert set_address(host) == "The gateway accepted 192.168.1.10."


def test_hostile_requests_set_nothing(vorsim: Vorsim, host: str) -> None:
    form = "address=192.168.1.10&mask=255.255.255.0"
    assert post(host, form, Origin="http://example.com")[0] == 403
    assert post(host, form, Host="example.com")[0] == 403
    other = host.replace("127.0.0.1", "localhost")
    assert post(host, form, Host=other, Origin=f"http://{host}")[0] == 403
    assert post(host, "", Host=other, Origin=f"http://{other}")[0] == 200
    assert post(host, form, **{"Content-Length": "10000000000"})[0] == 413
    assert post(host, form, **{"Content-Length": "-1"})[0] == 413
    for body in ("", "&&&=", "address=%00%ff&mask=%zz", "address=" + "1" * 900, "address=%3Cscript%3E&mask=%0d%0a"):
        assert post(host, body)[1].startswith("Nothing was sent: ")
    connection = http.client.HTTPConnection(host)
    connection.request("POST", "/", urllib.parse.urlencode({"address": "<script>", "mask": "\N{SNOWMAN}"}))
    assert b"<script" not in connection.getresponse().read()
    name, port = host.split(":")
    with socket.create_connection((name, int(port))) as idle, socket.create_connection((name, int(port))) as partial:
        partial.sendall(b"POST / HTTP/1.1\r\nContent-Length: 30\r\n\r\naddr")
        idle.sendall(b"\x16\x03\x01")
        hung_up = socket.create_connection((name, int(port)))
        hung_up.sendall(b"POST / HTTP/1.1\r\n")
        hung_up.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))  # so that it is a reset
        hung_up.close()
        vorsim.expect()
        assert set_address(host) == "The gateway accepted 192.168.1.10."


def test_requests_at_once_take_turns(vorsim: Vorsim, host: str) -> None:
    said: list[str] = []
    threads = [threading.Thread(target=lambda: said.append(set_address(host))) for _ in range(5)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert said == ["The gateway accepted 192.168.1.10."] * 5
    assert len(vorsim.received()) == 5
