"""Firefox without a screen, driven by its own remote control: lengths and JSON over a socket."""
import base64
import json
import socket
import subprocess
import tempfile
import time

from client import PATIENCE


class Firefox:
    def __init__(self, width, height):
        self.profile = tempfile.TemporaryDirectory()
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
        with open(f"{self.profile.name}/user.js", "w", encoding="ascii") as file:
            file.write(f'user_pref("marionette.port", {port});\n'
                       'user_pref("datareporting.policy.dataSubmissionEnabled", false);\n'
                       'user_pref("app.update.enabled", false);\n'
                       'user_pref("browser.shell.checkDefaultBrowser", false);\n'
                       'user_pref("network.captive-portal-service.enabled", false);\n')
        self.process = subprocess.Popen(
            ["firefox-esr", "--headless", "--marionette", "--no-remote", "--profile", self.profile.name,
             "--width", str(width), "--height", str(height)],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.socket, self.count = self.connected(port), 0
        self.read()  # it says hello first
        self.do("WebDriver:NewSession", {"capabilities": {"alwaysMatch": {}}})
        self.do("WebDriver:SetTimeouts", {"script": PATIENCE * 1000})

    def connected(self, port):
        deadline = time.monotonic() + PATIENCE
        while True:
            try:
                return socket.create_connection(("127.0.0.1", port), timeout=PATIENCE)
            except ConnectionRefusedError:
                if time.monotonic() > deadline or self.process.poll() is not None:
                    raise
                time.sleep(0.1)

    def read(self):
        length = b""
        while not length.endswith(b":"):
            length += self.socket.recv(1)
        data, most = b"", int(length[:-1])
        while len(data) < most:
            data += self.socket.recv(most - len(data))
        return json.loads(data)

    def do(self, command, parameters):
        self.count += 1
        data = json.dumps([0, self.count, command, parameters])
        self.socket.sendall(f"{len(data)}:{data}".encode("ascii"))
        _, number, error, result = self.read()
        if error or number != self.count:
            raise RuntimeError(f"{command}: {error}")
        return result

    def open(self, address):
        self.do("WebDriver:Navigate", {"url": "about:blank"})
        self.do("WebDriver:Navigate", {"url": address})

    def run(self, script, *arguments):
        """What a script returns, or hands to the function that is its last argument."""
        parameters = {"script": script, "args": arguments}
        kind = "Async" if "arguments[arguments.length - 1]" in script else ""
        return self.do(f"WebDriver:Execute{kind}Script", parameters)["value"]

    def act(self, *actions):
        """Does what a mouse does: pointerMove, pointerDown, pointerUp, pause."""
        self.do("WebDriver:PerformActions", {"actions": [
            {"type": "pointer", "id": "mouse", "parameters": {"pointerType": "mouse"}, "actions": list(actions)}]})

    def turn_wheel(self, x, y, distance):
        self.do("WebDriver:PerformActions", {"actions": [{"type": "wheel", "id": "wheel", "actions": [
            {"type": "scroll", "x": x, "y": y, "deltaX": 0, "deltaY": distance, "duration": 0}]}]})

    def shot(self, path):
        data = self.do("WebDriver:TakeScreenshot", {"full": False})["value"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))

    def quit(self):
        self.do("Marionette:Quit", {"flags": ["eForceQuit"]})
        self.socket.close()
        self.process.wait(PATIENCE)
        self.profile.cleanup()
