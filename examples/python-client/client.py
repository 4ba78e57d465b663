#!/usr/bin/env python3
"""Sets the opacity of a window and waits until it has told so. Run as: client.py UID OPACITY"""
import json
import os
import socket
import sys


class Server:
    def __init__(self, name):
        folder = os.environ.get("CORVANE_RUNTIME_DIR", "/run/corvane")
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(f"{folder}/{name}.sock")
        self.lines = self.socket.makefile("r", encoding="utf-8")

    def call(self, method, **params):
        self.socket.sendall(json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": params}).encode() + b"\n")
        answer = next(message for message in self.messages() if "id" in message)
        if "error" in answer:
            raise RuntimeError(answer["error"]["message"])
        return answer["result"]

    def messages(self):
        return map(json.loads, self.lines)


window = Server("APP" + sys.argv[1])
listener = Server("APP" + sys.argv[1])
listener.call("rpc.subscribe", notifications=["IWindow::onOpacityChange"])
window.call("IWindow::setOpacity", opacity=int(sys.argv[2]))
print(next(listener.messages())["params"])
