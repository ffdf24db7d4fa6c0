"""What a screen reader knows of the program: its objects with their roles, names and states, and what can be done to
them. Nothing is looked up by anything that a screen reader does not get."""

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402  the version has to be chosen first

from screen import wait_for  # noqa: E402

# Roles that somebody works with; each needs a name to be told by.
CONTROLS = {"push button", "radio button", "check box", "text", "password text", "list", "tree", "table", "combo box",
            "menu item", "check menu item", "radio menu item", "toggle button", "slider", "page tab", "spin button"}
# What lists are made of. A list says how many there are, so they are no controls of their own.
CELLS = {"table cell", "list item", "tree item", "table row"}

# Their places on the keyboard, whatever the layout.
TAB, RETURN, UP = 23, 36, 111


class Node:
    """One object. Equal when it is the same object of the program."""

    def __init__(self, accessible):
        self._accessible = accessible

    def __eq__(self, other):
        return isinstance(other, Node) and self._accessible == other._accessible

    def __hash__(self):
        return hash(self._accessible)

    def __repr__(self):
        return f'{self.role} "{self.name}"'

    @property
    def role(self):
        return self._accessible.get_role_name()

    @property
    def name(self):
        return self._accessible.get_name()

    @property
    def description(self):
        return self._accessible.get_description()

    @property
    def states(self):
        return {state.value_nick for state in self._accessible.get_state_set().get_states()}

    def children(self):
        for i in range(self._accessible.get_child_count()):
            child = self._accessible.get_child_at_index(i)
            if child:
                yield Node(child)

    def all(self, into=lambda node: True):
        """This object and all in it, in the order in which they are read; `into` says what to look into."""
        yield self
        if into(self):
            for child in self.children():
                yield from child.all(into)

    def outline(self):
        """As `all`, without the cells of lists, which may be many."""
        return (node for node in self.all(lambda node: node.role not in {"tree", "table", "list"}))

    def find(self, role, name):
        """The only object of that role and name."""
        found = [node for node in self.outline() if node.role == role and node.name == name]
        if len(found) != 1:
            raise AssertionError(f'{len(found)} objects are a {role} "{name}"')
        return found[0]

    def cell(self, text):
        """The first cell of this list that shows the text."""
        for child in self.children():
            if child.role in CELLS and child.name == text:
                return child
        raise AssertionError(f'no cell of {self} shows "{text}"')

    def actions(self):
        if "Action" not in self._accessible.get_interfaces():
            return []
        return [self._accessible.get_action_name(i) for i in range(self._accessible.get_n_actions())]

    def do(self, action):
        if not self._accessible.do_action(self.actions().index(action)):
            raise AssertionError(f"{self} refuses to {action}")

    def press(self):
        self.do("Press")

    def choose(self):
        self.do("Toggle")

    def take_focus(self):
        self.do("SetFocus")

    def type(self, text):
        if not self._accessible.set_text_contents(text):
            raise AssertionError(f"{self} takes no text")

    def click(self):
        """With the mouse, which also makes the window the active one where no window manager does."""
        area = self._accessible.get_extents(Atspi.CoordType.SCREEN)
        Atspi.generate_mouse_event(area.x + area.width // 2, area.y + area.height // 2, "b1c")


class Program:
    """The program's side of the bus."""

    def __init__(self, process):
        self._process = process
        self._application = wait_for(self._found)
        if not self._application:
            raise AssertionError("the program does not turn up on the accessibility bus")
        # What is remembered would be what was.
        self._application.set_cache_mask(Atspi.Cache.NONE)

    def _found(self):
        desktop = Atspi.get_desktop(0)
        for i in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(i)
            if application and application.get_process_id() == self._process.pid:
                return application
        return None

    def windows(self):
        return [window for window in Node(self._application).children() if "showing" in window.states]

    def window(self, title):
        """The window whose title begins so, as soon as it is there."""
        found = wait_for(lambda: next((w for w in self.windows() if w.name.startswith(title)), None))
        if not found:
            raise AssertionError(f'no window "{title}" among {self.windows()}')
        return found


def press_key(key):
    Atspi.generate_keyboard_event(key, None, Atspi.KeySynthType.PRESSRELEASE)


def start():
    """Before the program, so that the bus is there when it asks for it."""
    Atspi.init()
    wait_for(lambda: Atspi.get_desktop(0).get_child_count() >= 0)
