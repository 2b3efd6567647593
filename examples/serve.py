#!/usr/bin/python3
# A back end in Python, over the pipe of vorcfg serve: sets an address and prepares a site.
#
#   vorsim & examples/serve.py 192.168.1.10
import json
import subprocess
import sys


class Vorcfg:
    def __init__(self):
        self.process = subprocess.Popen(["vorcfg", "serve"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.version = json.loads(self.process.stdout.readline())["version"]
        self.asked = 0

    def ask(self, **request):
        self.asked += 1
        print(json.dumps({"id": self.asked, **request}), file=self.process.stdin, flush=True)
        answer = json.loads(self.process.stdout.readline())
        assert answer["id"] == self.asked
        return answer["output"]


vorcfg = Vorcfg()
address = {"interface_number": 0, "ip_address": sys.argv[1], "subnet_mask": "255.255.255.0", "config_option": 1}
result = vorcfg.ask(call="ip set-ip-address", arguments=address)[-1]
print("Address:", result.get("verdict") or result["complaint"])

site = "gateway tower-${site}\ngsm set-password 1 ${pin} 1\nmqtt set-topic site/${site}/data 1\n"
for line in vorcfg.ask(command="plan", site=site, vars={"site": 17}, secrets={"pin": "0000"}):
    if line["type"] == "plan_line" and line["due"]:
        print("To make:", line["call"], line["arguments"])
