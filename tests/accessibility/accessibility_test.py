#!/usr/bin/env python3
"""The program as a screen reader meets it: named controls, read-outs that can be read, pots that can be pressed, and a
sensible way through with the Tab key.

Usage: accessibility_test.py PROGRAM COMMUNITY-PORT [unittest's arguments]"""

import collections
import http.server
import plistlib
import re
import shutil
import sys
import threading
import unittest
from pathlib import Path

from screen import NoScreen, Screen, end, wait_for

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "demo"))
import make_library  # noqa: E402

CANNOT_RUN = 77
PLUG_INS = {"Wendlebrook EQ", "Quillmoor Echo", "Ploverton Tuner", "Écho d’été 🌊"}


class ProgramTest(unittest.TestCase):
    """Each test runs the program anew on a few plug-ins of the demo library, without drafts of an earlier one."""

    def setUp(self):
        shutil.rmtree(screen.folder / "state", ignore_errors=True)
        make_library.LIBRARY = screen.folder / "library"
        make_library.PLUG_INS = [plug_in for plug_in in every_plug_in if Path(plug_in[0]).name in PLUG_INS]
        make_library.DECOYS = {}
        make_library.main()
        self.start()

    def start(self, **environment):
        self.process = screen.run(program_path, **environment)
        self.addCleanup(end, self.process)
        self.program = reader.Program(self.process)
        self.main = self.program.window("kvOrvantaLogic Tool")

    def choose_plug_in(self, name):
        self.main.find("tree", "Plug-ins").cell(name).choose()
        self.wait(lambda: self.main.name.startswith(name), "the title does not tell the plug-in")

    def choose_parameter(self, name):
        self.main.find("tree", "Plugin Parameters").cell(name).choose()

    def wait(self, what, otherwise):
        self.assertTrue(wait_for(what, 5), otherwise)

    def labels(self):
        return [node.name for node in self.main.outline() if node.role == "label"]

    def pot(self, number):
        return next(node for node in self.main.outline()
                    if node.role == "push button" and re.match(rf"Pot {number}\b", node.name))

    def pages(self):
        return [node for node in self.main.find("list", "Pages").children() if node.role in reader.CELLS]

    def press_item(self, name):
        self.main.find("menu item", name).press()

    def showing(self, role, name):
        """The control of that name as soon as it is seen."""
        found = wait_for(lambda: next((node for node in self.main.outline() if (node.role, node.name) == (role, name)
                                       and "showing" in node.states), None), 5)
        self.assertTrue(found, f'no {role} "{name}" is seen')
        return found

    def alert(self):
        found = wait_for(lambda: next((w for w in self.program.windows() if w.role in {"alert", "dialog"}), None))
        self.assertTrue(found, "no alert is told")
        return found

    def wait_for_undo(self):
        def can_undo():
            return any(node.role == "push button" and node.name == "Undo Assign Parameter" and "enabled" in node.states
                       for node in self.main.outline())
        self.wait(can_undo, "undo does not say what it takes back")

    def check_controls(self, window):
        """Every control of a window has a name, an action or a text where its role promises one, and no twin."""
        controls = [node for node in window.outline() if node.role in reader.CONTROLS]
        for node in controls:
            self.assertNotEqual(node.name.strip(), "", f"a {node.role} of {window} has no name")
            self.assertNotRegex(node.name, r"^(_q_|qt_|kv|btn|cwin|lab_)", f"{node} is named for the program's eyes")
            if node.role in {"push button", "check box"} and "enabled" in node.states:
                self.assertTrue({"Press", "Toggle"} & set(node.actions()), f"{node} cannot be pressed")
        for node in window.outline():
            if "focusable" in node.states and node.role != "label":  # the text of an alert can be copied
                self.assertIn(node.role, reader.CONTROLS, f"{node} takes the focus without being a control")
        twins = [each for each, count in collections.Counter((n.role, n.name) for n in controls).items() if count > 1]
        self.assertEqual(twins, [], f"controls of {window} that cannot be told apart")


class MainWindowTest(ProgramTest):
    def test_every_control_has_a_name_of_its_own(self):
        for plug_in in (None, "Quillmoor Echo", "Ploverton Tuner"):
            with self.subTest(plug_in=plug_in):
                if plug_in:
                    self.choose_plug_in(plug_in)
                self.check_controls(self.main)

    def test_the_file_can_be_shown_once_there_is_one(self):
        def can_show():
            return any(node.role == "push button" and node.name.startswith("Show in F") and "enabled" in node.states
                       for node in self.main.outline())
        self.assertFalse(can_show())
        self.choose_plug_in("Quillmoor Echo")
        self.wait(can_show, "the file cannot be shown")

    def test_what_has_no_room_is_in_the_menu_of_a_named_button(self):
        end(self.process)
        self.start(QT_FONT_DPI="200", QT_ENABLE_HIGHDPI_SCALING="0")  # larger letters alone, in a window as large
        more = self.showing("push button", "More for the mapping")
        self.check_controls(self.main)
        self.assertNotIn("showing", self.main.find("push button", "Help").states)
        # A menu that a button opens is no part of what can be read in order; its items are told as they are gone through.
        self.main.find("label", "kvOrvantaLogic Tool").click()
        self.wait(lambda: "active" in self.main.states, "the window is not in front")
        more.press()
        self.wait(lambda: "pressed" not in more.states, "the button stays pressed")
        reader.press_key(reader.UP)  # to the last
        reader.press_key(reader.RETURN)
        alert = self.alert()
        self.assertTrue(any("Scan for plugins" in node.name for node in alert.outline()), "it is not the help")

    def test_every_row_of_a_list_says_what_it_is(self):
        self.choose_plug_in("Wendlebrook EQ")
        for title in ("Plug-ins", "Plugin Parameters"):
            cells = [node for node in self.main.find("tree", title).children() if node.role in reader.CELLS]
            columns = 3
            self.assertGreater(len(cells), 2 * columns)
            for first, second in zip(cells[::columns], cells[1::columns]):
                self.assertNotEqual(first.name, "", title)
                self.assertNotEqual(second.name, "", title)

    def test_parts_are_told_in_the_order_in_which_they_are_seen(self):
        told = [node.name for node in self.main.outline()]
        parts = ["kvOrvantaLogic Tool", "Editing mode", "Plug-ins", "Plugin Parameters", "Please Select a plugin",
                 "Exchange with", "Not Logged In"]
        places = [told.index(part) for part in parts]
        self.assertEqual(places, sorted(places), dict(zip(parts, places)))

    def test_read_outs_can_be_read(self):
        for label in ("Please Select a plugin", "Please Select a Plugin", "Not Logged In", "-"):
            self.assertIn(label, self.labels())
        self.choose_plug_in("Quillmoor Echo")
        labels = self.labels()
        path = screen.folder / "library/Library/Application Support/Logic/Plug-In Settings/Quillmoor Echo"
        for label in ("Page 1 of 3", "3 Pages", "23 of 23 mapped", str(path / "CSParameterOrder.plist"),
                      "Left Delay Time", "Logic Pro Insert/Effect Mapper", "Editing Quillmoor Echo in Insert/Effect Mode"):
            self.assertIn(label, labels)

    def test_a_page_step_is_told(self):
        self.choose_plug_in("Quillmoor Echo")
        self.assertIn("Left Delay Time", self.labels())
        self.main.find("push button", "Show next page").press()
        self.wait(lambda: "Page 2 of 3" in self.labels(), "the page read-out does not change")
        self.assertIn("Right Delay Time", self.labels())
        self.assertNotIn("Left Delay Time", self.labels())

    def test_a_press_assigns(self):
        self.choose_plug_in("Wendlebrook EQ")
        self.choose_parameter("High Q")
        self.pot(3).press()
        self.wait(lambda: self.labels().count("High Q") == 1, "the label under the pot does not change")
        self.assertIn("Unsaved pots: 1", self.labels())
        self.assertTrue(self.main.name.startswith("Wendlebrook EQ"))
        self.wait_for_undo()

    def test_pots_say_what_stands_on_them(self):
        self.choose_plug_in("Quillmoor Echo")
        self.assertEqual(self.pot(1).name, "Pot 1, Left Delay Time, page 1 of 3")
        self.main.find("push button", "Show last page").press()
        self.wait(lambda: self.pot(1).name == "Pot 1, Tempo Sync, page 3 of 3", "the pot keeps its name")
        self.assertEqual(self.pot(8).name, "Pot 8, empty, page 3 of 3")
        self.choose_parameter("Freeze")
        self.pot(8).press()
        self.wait(lambda: self.pot(8).name == "Pot 8, Freeze, page 3 of 3", "an assignment is not told")
        self.choose_plug_in("Ploverton Tuner")
        self.assertEqual(self.pot(3).name, "Pot 3, empty, page 1 of 1")

    def test_the_overview_tells_its_pages(self):
        self.choose_plug_in("Quillmoor Echo")
        pages = self.pages()
        self.assertEqual(len(pages), 3)
        for number, page in enumerate(pages, 1):
            self.assertIn(str(number), page.name)

    def test_pots_say_what_a_press_would_do(self):
        self.choose_plug_in("Quillmoor Echo")
        self.assertIn("Clear pot 3", self.pot(3).description)
        self.choose_parameter("Freeze")
        self.wait(lambda: "Put Freeze on pot 3" in self.pot(3).description, "the pot does not say it")

    def test_narrowing_and_going_to_a_page(self):
        plug_ins = self.main.find("tree", "Plug-ins")
        self.main.find("text", "Search plug-ins").type("quill")
        self.wait(lambda: "1 of 4" in self.labels(), "it is not told how many were found")
        self.assertEqual([node.name for node in plug_ins.children() if node.role in reader.CELLS][:1], ["Quillmoor Echo"])
        self.assertIn("Clear: Search plug-ins", [node.name for node in self.main.outline() if "showing" in node.states])
        self.choose_plug_in("Quillmoor Echo")
        self.main.find("label", "kvOrvantaLogic Tool").click()
        self.press_item("Go to Page")
        field = self.showing("text", "Go to page: number or first letters of a name")
        self.check_controls(self.main)
        field.type("99")
        reader.press_key(reader.RETURN)
        self.wait(lambda: "99" in field.description, "it is not told that there is no such page")
        self.assertTrue(any("99" in label for label in self.labels()), self.labels())
        field.type("3")
        reader.press_key(reader.RETURN)
        self.wait(lambda: "Page 3 of 3" in self.labels(), "the page is not shown")

    def test_what_differs_is_told(self):
        self.choose_plug_in("Quillmoor Echo")
        self.choose_parameter("Freeze")
        self.pot(1).press()
        self.wait_for_undo()
        self.press_item("Compare With Saved File")
        self.wait(lambda: "1 pot differs from the saved file" in self.labels(), "the comparison is not told")
        self.assertIn("Freeze; in the saved file: Left Delay Time", self.pot(1).description)
        self.assertIn("1 pot differs", self.pages()[0].name)
        self.check_controls(self.main)
        self.press_item("Compare With Nothing")
        self.wait(lambda: "in the saved file" not in self.pot(1).description, "the pot keeps telling it")

    def test_what_is_left_behind_is_told(self):
        self.choose_plug_in("Quillmoor Echo")
        self.main.find("push button", "Clear All").press()
        self.wait(lambda: any("beyond page 1" in label for label in self.labels()), "the hint is not told")
        self.check_controls(self.main)
        self.assertIn("left behind the last page", self.pages()[1].name)
        self.showing("push button", "Start From Scratch").press()
        self.wait(lambda: not any("beyond page 1" in label for label in self.labels()), "the hint stays")

    def test_a_draft_is_told(self):
        self.choose_plug_in("Quillmoor Echo")
        self.choose_parameter("Freeze")
        self.pot(1).press()
        self.wait_for_undo()
        end(self.process)
        self.start()
        self.main.find("tree", "Plug-ins").cell("Quillmoor Echo, draft of unsaved edits").choose()
        self.wait(lambda: any(label.startswith("1 unsaved pot from ") for label in self.labels()), "no draft is told")
        self.check_controls(self.main)
        self.showing("push button", "Discard draft")
        self.showing("push button", "Bring back draft").press()
        self.wait(lambda: self.pot(1).name.startswith("Pot 1, Freeze,"), "the draft is not brought back")

    def test_tab_visits_every_control_once(self):
        self.choose_plug_in("Quillmoor Echo")
        self.choose_parameter("Freeze")
        self.pot(1).press()
        self.wait_for_undo()
        controls = [node for node in self.main.outline() if {"focusable", "enabled", "showing"} <= node.states]
        visited = self.visited_by_tab(controls)
        names = [node.name for node in visited]
        # Of the two cells of the mode one is on the way; arrow keys go to the other.
        unvisited = [node for node in controls if node not in visited and node.role != "radio button"]
        self.assertEqual(unvisited, [])
        order = ["Instrument", "Undo Assign Parameter", "Save Mapping", "Help", "Search plug-ins", "Scan for plugins",
                 "Plug-ins", "Search parameters", "Not mapped yet", "Plugin Parameters"]
        order += [self.pot(number).name for number in range(1, 9)]
        order += ["Pages", "Show first page", "New Page", "Delete Page", "Clear All", "Account", "Browse"]
        places = [names.index(name) for name in order]
        self.assertEqual(places, sorted(places), names)

    def visited_by_tab(self, controls):
        """What gets the focus from the first control until it comes to one for the second time."""
        self.main.find("label", "kvOrvantaLogic Tool").click()
        controls[0].take_focus()
        visited = []
        focused = self.focused(controls, None)
        while focused and focused not in visited:
            visited.append(focused)
            reader.press_key(reader.TAB)
            focused = self.focused(controls, focused)
        self.assertEqual(focused, visited[0], f"the way does not lead back to its begin: {visited}")
        return visited

    @staticmethod
    def focused(controls, before):
        def find():
            return next((node for node in controls if node != before and "focused" in node.states), None)
        return wait_for(find, 5)


class CommunityServer(http.server.BaseHTTPRequestHandler):
    """Lets everybody in and has one shared mapping."""

    def do_POST(self):
        replies = {"checkuser.php": "\nOK\n", "checkuserexists.php": "Done",
                   "kv_listplists.php": '[{"patchID": 7, "fileLocation": "x", "userComments": "Drums first"}]'}
        reply = next((text for name, text in replies.items() if f"/{name}" in self.path), "")
        self.send_response(200)
        self.send_header("Content-Length", str(len(reply)))
        self.end_headers()
        self.wfile.write(reply.encode())

    def do_GET(self):
        self.send_response(200)
        shared = plistlib.dumps({"ControlSurfaceParameterOrder": ["1 Drums", "-1", "2 Bass"]})
        self.send_header("Content-Length", str(len(shared)))
        self.end_headers()
        self.wfile.write(shared)

    def log_message(self, *_):
        pass


class CommunityWindowsTest(ProgramTest):
    def setUp(self):
        def listen():
            try:
                return http.server.ThreadingHTTPServer(("127.0.0.1", community_port), CommunityServer)
            except OSError:
                return None
        server = wait_for(listen, 20)
        self.assertTrue(server, f"another program has port {community_port}")
        threading.Thread(target=server.serve_forever, args=[0.02], daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        super().setUp()

    def test_account_window(self):
        self.main.find("push button", "Account").press()
        window = self.program.window("Community Account")
        self.check_controls(window)
        window.find("text", "User name").type("wren")
        window.find("password text", "PIN").type("2468")
        window.find("push button", "Log In").press()
        self.wait(lambda: "Logged in as wren" in self.labels(), "the log-in is not told")

    def test_share_window(self):
        # The server lets everybody in, the nobody of a first start too.
        self.choose_plug_in("Wendlebrook EQ")
        self.main.find("push button", "Share").press()
        self.check_controls(self.program.window("Share Mapping"))

    def test_browse_window(self):
        self.choose_plug_in("Wendlebrook EQ")
        self.main.find("push button", "Browse").press()
        window = self.program.window("Shared Mappings")
        self.check_controls(window)
        self.assertEqual(window.find("tree", "Shared for this plug-in").cell("Drums first").name, "Drums first")
        window.find("tree", "Shared for this plug-in").cell("Drums first").choose()
        preview = window.find("push button", "Preview")
        self.wait(lambda: "enabled" in preview.states, "nothing can be previewed")
        preview.press()
        tables = wait_for(lambda: [node for node in window.outline() if node.name == "Pages of the shared mapping"
                                   and "showing" in node.states], 5)
        self.assertTrue(tables, "the preview is not seen")
        self.assertEqual(tables[0].cell("Bass, differs").name, "Bass, differs")
        self.check_controls(window)

    def test_an_alert_is_read_whole(self):
        self.main.find("push button", "Help").press()
        alert = self.alert()
        self.check_controls(alert)
        texts = [node.name for node in alert.outline() if node.role == "label"]
        self.assertTrue(any(texts), texts)
        alert.find("push button", "OK").press()
        self.wait(lambda: alert not in self.program.windows(), "the alert stays")


if __name__ == "__main__":
    program_path, community_port = sys.argv[1], int(sys.argv[2])
    every_plug_in = make_library.PLUG_INS
    try:
        screen = Screen()
    except NoScreen as reason:
        print(f"cannot run: {reason}")
        sys.exit(CANNOT_RUN)
    try:
        import reader  # finds the bus through the environment
        reader.start()
        result = unittest.main(argv=sys.argv[:1] + sys.argv[3:], exit=False, warnings="ignore").result
    finally:
        screen.close()
    sys.exit(not result.wasSuccessful())
