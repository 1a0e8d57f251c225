"""A running penwick: its windows and menus on the accessibility bus, and its keyboard and mouse
input."""

import re
import subprocess

from .events import Events
from .text import Text
from .waiting import Timeout, until


class Application:
    """Starts `program` with `arguments` in `session`; `environment` adds to the session's
    environment.

    `output` is the file with the program's standard output and standard error."""

    def __init__(self, session, program, *arguments, environment=None):
        self._connect(session)
        saved = dict(session.environment)
        session.environment.update(environment or {})
        with self.output.open("ab") as log:
            self.process = session.start(
                program, *arguments, stdout=log, stderr=subprocess.STDOUT
            )
        session.environment = saved
        self._pid = self.process.pid
        until(self._find, "the program on the accessibility bus")

    @classmethod
    def running(cls, session, pid):
        """Attaches to a penwick that another program started, by its process id. It has no
        `process`."""
        app = cls.__new__(cls)
        app._connect(session)
        app._pid = pid
        until(app._find, "the program on the accessibility bus")
        return app

    def _connect(self, session):
        # Imported here because the import connects to the bus that the session has set.
        import gi

        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, GLib

        self._atspi, self._glib = Atspi, GLib
        Atspi.set_timeout(5000, 15000)
        self._session = session
        self.output = session.home / "penwick-output.txt"
        self.process = None
        self._root = None

    def _find(self):
        if self.process and self.process.poll() is not None:
            raise Timeout(
                f"the program ended with status {self.process.returncode}:\n"
                + self.output.read_text(errors="replace")
            )
        desktop = self._atspi.get_desktop(0)
        desktop.set_cache_mask(self._atspi.Cache.NONE)
        for index in range(desktop.get_child_count()):
            child = self._quietly(lambda i=index: desktop.get_child_at_index(i))
            if child and self._quietly(child.get_process_id) == self._pid:
                # Without a main loop no change event arrives, so nothing may be cached.
                child.set_cache_mask(self._atspi.Cache.NONE)
                self._root = child
                return child
        return None

    def _quietly(self, question, otherwise=None):
        """The result of `question`, or `otherwise` when the object has disappeared."""
        try:
            return question()
        except self._glib.Error:
            return otherwise

    # Looking

    def children(self, node):
        count = self._quietly(node.get_child_count, 0)
        found = (self._quietly(lambda i=i: node.get_child_at_index(i)) for i in range(count))
        return [child for child in found if child]

    def name(self, node):
        return self._quietly(node.get_name, "") or ""

    def role(self, node):
        name = self._quietly(node.get_role_name, "") or ""
        return "push button" if name == "button" else name  # The name in newer releases of AT-SPI.

    def description(self, node):
        return self._quietly(node.get_description, "") or ""

    def has_state(self, node, state):
        """True when `node` has `state`, a lower-case name such as "showing", "enabled" or
        "focused"."""
        states = self._quietly(node.get_state_set)
        return bool(states) and states.contains(getattr(self._atspi.StateType, state.upper()))

    def windows(self):
        """The names of the visible windows, including dialogs."""
        return [self.name(w) for w in self.children(self._root) if self.has_state(w, "showing")]

    def walk(self, node=None):
        for child in self.children(node or self._root):
            yield child
            yield from self.walk(child)

    def find(self, role=None, name=None, within=None, showing=True):
        """The first node of that role and name, or None. `name` is a text or a predicate."""
        fits = name if callable(name) else (lambda text: name is None or text == name)
        for node in self.walk(within):
            if role is not None and self.role(node) != role:
                continue
            if fits(self.name(node)) and (not showing or self.has_state(node, "showing")):
                return node
        return None

    def wait_for(self, role=None, name=None, within=None):
        return until(
            lambda: self.find(role, name, within),
            lambda: f"{role or 'a node'} {name!r} in\n{self.tree()}",
        )

    def text_of(self, node):
        """The text that `node` holds, up to its first NUL."""
        text = self._quietly(node.get_text_iface)
        if not text:
            return self.name(node)
        count = self._quietly(lambda: self._atspi.Text.get_character_count(text), 0)
        return self._quietly(lambda: self._atspi.Text.get_text(text, 0, count), "") or ""

    def text_interface(self, node):
        """The accessible text interface of `node`."""
        return Text(self._atspi, node)

    def events(self, *types):
        """Listens to events of the given types; a context manager."""
        return Events(self._atspi, self._glib, *types)

    def path_to(self, node):
        """The nodes from the window down to the parent of `node`."""
        path, parent = [], self._quietly(node.get_parent)
        while parent and self.role(parent) != "application":
            path.insert(0, parent)
            parent = self._quietly(parent.get_parent)
        return path

    def tree(self, node=None, depth=0):
        """The visible nodes as text, for the message of a failed wait."""
        lines = []
        for child in self.children(node or self._root):
            state = "" if self.has_state(child, "showing") else " (hidden)"
            lines.append(f"{'  ' * depth}{self.role(child)} {self.name(child)!r}{state}")
            lines.append(self.tree(child, depth + 1))
        return "\n".join(line for line in lines if line)

    # Acting

    def press(self, *keys):
        """Presses keys by their X names, with modifiers: press("ctrl+s", "Return")."""
        self._session.run("xdotool", "key", "--delay", "15", *keys)

    def type(self, text):
        """Types ASCII text."""
        self._session.run("xdotool", "type", "--delay", "15", "--", text)

    def extents(self, node):
        """The place of `node` on the screen."""
        return node.get_component_iface().get_extents(self._atspi.CoordType.SCREEN)

    def click(self, node, button=1):
        """Clicks the center of `node`."""
        box = self.extents(node)
        x, y = box.x + box.width // 2, box.y + box.height // 2
        self._session.run("xdotool", "mousemove", x, y, "click", button)

    def focus_window(self, title):
        """Brings the window whose title starts with `title` to the front and gives it the focus."""
        search = ("xdotool", "search", "--onlyvisible", "--name", f"^{re.escape(title)}")
        window = until(lambda: self._quietly_run(*search), f"the window {title!r}").split()[0]
        self._session.run("xdotool", "windowactivate", "--sync", window)

    def wait_for_window(self, title):
        """Waits for a visible window of any program whose title contains `title`."""
        search = ("xdotool", "search", "--onlyvisible", "--name", re.escape(title))
        until(lambda: self._quietly_run(*search), f"the window {title!r}")

    def windows_on_screen(self):
        """The X ids of penwick's visible windows, including open menus."""
        search = ("xdotool", "search", "--onlyvisible", "--class", "penwick")
        return set(self._quietly_run(*search).split())

    def _quietly_run(self, *command):
        return subprocess.run(
            command,
            env=self._session.environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
        ).stdout.strip()

    def menu_bar(self):
        return self.wait_for("menu bar")

    def menu_item(self, *path):
        """The item at the path of titles from the menu bar down, whether its menu is open or
        not."""

        def search():
            node = self.find("menu bar")
            for title in path:
                node = node and self._entry(node, title)
            return node

        return until(search, lambda: f"the menu item {path} in\n{self.tree()}")

    def _entry(self, menu, title):
        for child in self.menu_entries(menu):
            if self.name(child) == title:
                return child
        return None

    def menu_entries(self, menu):
        """The entries of a menu or the menu bar. For a submenu's entry `menu`, the submenu's
        entries."""
        entries = []
        for child in self.children(menu):
            # Qt puts a popup node between an entry and the popup's entries.
            if self.role(child) in ("popup menu", "menu") and not self.name(child):
                entries.extend(self.children(child))
            else:
                entries.append(child)
        return entries

    def choose(self, *path):
        """Opens the menus of `path` and clicks the last item with the mouse."""
        for depth in range(1, len(path) + 1):
            node = self.menu_item(*path[:depth])
            until(lambda n=node: self.has_state(n, "showing"), f"the menu item {path[:depth]}")
            self.click(node)

    def do_action(self, node):
        """Does what a click on `node` does, without using the mouse or moving the focus."""
        # An action that opens a modal dialog replies only when the dialog closes.
        self._quietly(lambda: self._atspi.Action.do_action(node.get_action_iface(), 0))

    def shortcut(self, node):
        """The shortcut of a menu item, such as "Ctrl+Shift+S"; empty if it has none."""
        action = node.get_action_iface()
        return self._quietly(lambda: self._atspi.Action.get_key_binding(action, 0), "") or ""

    def wait_for_end(self):
        """Waits until the program has ended by itself, and returns its exit status."""
        until(lambda: self.process.poll() is not None, "the program to end")
        return self.process.returncode
