"""A headless Chromium, driven through its DevTools protocol."""
import json
import os
import shutil
import subprocess
import tempfile
import time

import websocket


class Browser:
    """One page of a browser of its own; what its console says is collected in messages."""

    def __init__(self, program):
        self.folder = tempfile.mkdtemp(prefix="tov_browser_")
        arguments = [program, "--headless=new", "--disable-gpu", "--no-first-run", "--disable-extensions",
                     "--disable-background-networking", "--remote-debugging-port=0", "--window-size=1400,1000",
                     "--remote-allow-origins=*", "--user-data-dir=" + self.folder, "about:blank"]
        if os.geteuid() == 0:
            arguments.insert(1, "--no-sandbox")  # which root cannot have
        self.process = subprocess.Popen(arguments, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.count = 0
        self.messages = []
        self.socket = None

    def __enter__(self):
        port = self._wait(self._port)
        target = self._wait(lambda: self._page(port))
        self.socket = websocket.create_connection(target, timeout=120)
        for domain in ("Page", "Runtime", "Log"):
            self.call(domain + ".enable")
        return self

    def __exit__(self, *_):
        if self.socket:
            self.socket.close()
        self.process.kill()
        self.process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def _wait(self, ask):
        for _ in range(1200):
            answer = ask()
            if answer:
                return answer
            if self.process.poll() is not None:
                raise SystemExit("the browser ended")
            time.sleep(0.1)
        raise SystemExit("the browser does not answer")

    def _port(self):
        path = os.path.join(self.folder, "DevToolsActivePort")
        if not os.path.exists(path):
            return None
        lines = open(path, encoding="utf-8").read().split("\n")
        return lines[0] if len(lines) > 1 else None

    @staticmethod
    def _page(port):
        from urllib.request import ProxyHandler, build_opener
        address = "http://127.0.0.1:" + port + "/json/list"
        with build_opener(ProxyHandler({})).open(address, timeout=60) as answer:
            pages = [page for page in json.load(answer) if page["type"] == "page"]
        return pages[0]["webSocketDebuggerUrl"] if pages else None

    def _take(self, message):
        method = message.get("method")
        if method == "Runtime.exceptionThrown":
            self.messages.append(message["params"]["exceptionDetails"]["exception"].get("description", "exception"))
        elif method == "Runtime.consoleAPICalled":
            self.messages.append(str([argument.get("value") for argument in message["params"]["args"]]))
        elif method == "Log.entryAdded":
            self.messages.append(message["params"]["entry"]["text"])
        elif method == "Page.javascriptDialogOpening":
            self.messages.append("a dialog opened")
            self._send("Page.handleJavaScriptDialog", {"accept": True})
        return method

    def _send(self, method, parameters):
        self.count += 1
        self.socket.send(json.dumps({"id": self.count, "method": method, "params": parameters or {}}))
        return self.count

    def call(self, method, parameters=None):
        number = self._send(method, parameters)
        while True:
            message = json.loads(self.socket.recv())
            if message.get("id") == number:
                if "error" in message:
                    raise SystemExit(method + ": " + message["error"]["message"])
                return message["result"]
            self._take(message)

    def open(self, path, place=""):
        """Opens a file, and returns when it has run its scripts."""
        self.call("Page.navigate", {"url": "about:blank"})
        self.call("Page.navigate", {"url": "file://" + path + place})
        while self._take(json.loads(self.socket.recv())) != "Page.loadEventFired":
            pass
        while self.run("document.readyState") != "complete" or self.run("location.href") == "about:blank":
            pass

    def run(self, expression):
        """The value of an expression in the page."""
        result = self.call("Runtime.evaluate", {"expression": expression, "returnByValue": True, "awaitPromise": True})
        if "exceptionDetails" in result:
            raise SystemExit(expression + ": " + json.dumps(result["exceptionDetails"].get("exception")))
        return result["result"].get("value")

    def press(self, key, code, text=""):
        """A key, as a person presses it."""
        parameters = {"key": key, "windowsVirtualKeyCode": code, "text": text}
        self.call("Input.dispatchKeyEvent", {"type": "keyDown", **parameters})
        self.call("Input.dispatchKeyEvent", {"type": "keyUp", **parameters})
        self.settle()

    def settle(self):
        """Waits until what an event has set off is there."""
        self.run("new Promise((done) => requestAnimationFrame(() => setTimeout(done)))")

    def type(self, text):
        self.call("Input.insertText", {"text": text})

    def click(self, selector):
        """Clicks into the middle of an element, wherever it is shown."""
        place = self.run("(() => { const e = document.querySelector(" + json.dumps(selector) + "); "
                         "if (!e) return null; e.scrollIntoView({block: 'center', inline: 'center'}); "
                         "const r = e.getBoundingClientRect(); return [r.x + r.width / 2, r.y + r.height / 2]; })()")
        if place is None:
            raise AssertionError("there is no " + selector)
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", {"type": kind, "x": place[0], "y": place[1], "button": "left",
                                                   "clickCount": 1})
        self.settle()
