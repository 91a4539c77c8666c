"""What an agent's program asks of the person."""
import json, os, socket, subprocess

import screen
from desktop import wait_for
from driving import victim


class Agent:
    """An agent's program that cannot ask its person."""

    def __init__(self, app):
        self.process = subprocess.Popen([app.programs + "/korvell", "mcp"], env=app.desktop.environment, text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.last = 0
        self.say("initialize", {"protocolVersion": "2025-11-25", "capabilities": {}})
        self.hear()

    def say(self, method, parameters):
        self.last += 1
        self.process.stdin.write(json.dumps({"jsonrpc": "2.0", "id": self.last, "method": method,
                                             "params": parameters}) + "\n")
        self.process.stdin.flush()

    def hear(self):
        return json.loads(self.process.stdout.readline())["result"]

    def call(self, tool, **arguments):
        self.say("tools/call", {"name": tool, "arguments": arguments})

    def wants_to_quit(self, name):
        """The first whose name begins so."""
        def handle():
            self.call("processes", by="cpu", limit=20)
            apps = self.hear()["structuredContent"]["apps"]
            return next((each["handle"] for each in apps if each["name"].startswith(name) and "handle" in each), None)
        self.call("quit_app", handle=wait_for(f"a handle of {name}", handle, 25))

    def end(self):
        self.process.stdin.close()
        self.process.stdout.close()
        self.process.kill()
        self.process.wait()


def agents_ask(app):
    """The application asks for an agent that can't; nothing but its window says yes."""
    def question():
        return screen.window("An agent asks")

    with victim(app) as pid:
        agent = Agent(app)
        agent.wants_to_quit("kvictim")
        wait_for("the question", question)
        screen.press("Return", "space")  # what was on its way when the window came
        assert agent.hear()["structuredContent"]["outcome"] == "declined"
        wait_for("the question's end", lambda: not question())
        agent.wants_to_quit("kvictim")
        wait_for("the question", question)
        agent.end()
        wait_for("the end of a question that nobody waits for", lambda: not question())
        assert os.path.exists(f"/proc/{pid}"), "quit without a yes"
        agent = Agent(app)
        agent.wants_to_quit("kvictim")
        wait_for("the question", question)
        button = screen.await_node("push button", "Quit", question())
        wait_for("the button, a moment later", lambda: button.has(screen.ENABLED))
        assert "An agent asks: Quit kvictim?" in screen.texts(question()), screen.texts(question())
        screen.click(button)
        assert agent.hear()["structuredContent"]["outcome"] == "done"
        wait_for("the process's end", lambda: not os.path.exists(f"/proc/{pid}"))
        agent.end()
    # A stranger's name has no lines and no direction of its own there.
    with victim(app, name="Notes\n\nKorvell checked this: it is safe. \u202eTIUQ") as pid:
        agent = Agent(app)
        agent.wants_to_quit("Notes")
        wait_for("the question", question)
        words = screen.texts(question())
        assert any("Notes  Korvell checked this" in text for text in words), words
        assert not any(mark in text for mark in "\n\u202e" for text in words), words
        # Nor is anything called as whoever asks likes to.
        agent.end()
        wait_for("the question's end", lambda: not question())
        with open(f"/proc/{pid}/stat", errors="replace") as stat:
            start = int(stat.read().rsplit(")", 1)[1].split()[19])
        with socket.socket(socket.AF_UNIX) as other:
            other.connect(app.desktop.runtime + "/korvell/keeper.sock")
            wish = {"do": "quit", "processes": [{"pid": pid, "start": start}], "name": "Calculator, which hangs"}
            other.sendall((json.dumps({"ask": "consent", "of": wish}) + "\n").encode())
            wait_for("the question", question)
            words = screen.texts(question())
            assert not any("Calculator" in text for text in words), words
        wait_for("the question's end", lambda: not question())
