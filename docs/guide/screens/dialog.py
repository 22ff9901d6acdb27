# Opens the print dialog of GTK with the queue "labels" selected and saves one of its tabs as a picture.
# Usage: dialog.py TAB PICTURE, where TAB is the title of a tab in English.
# SPDX-License-Identifier: Apache-2.0
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402

tab, picture = sys.argv[1:]
POLLS = 100  # of 100 ms


def inside(widget, kind):
    found = [widget] if isinstance(widget, kind) else []
    if isinstance(widget, Gtk.Container):
        widget.forall(lambda child: found.extend(inside(child, kind)))
    return found


def dialog():
    return [window for window in Gtk.Window.list_toplevels() if isinstance(window, Gtk.Dialog)][0]


def text_of(widget):
    return " ".join(label.get_text() for label in inside(widget, Gtk.Label))


def select_queue():
    for view in inside(dialog(), Gtk.TreeView):
        for row in view.get_model() or []:
            if "labels" in [value for value in row if isinstance(value, str)]:
                view.set_cursor(row.path)
                return True
    return False


def show_tab():
    book = inside(dialog(), Gtk.Notebook)[0]
    for number in range(book.get_n_pages()):
        page = book.get_nth_page(number)
        if page.get_visible() and text_of(book.get_tab_label(page)) == tab:
            book.set_current_page(number)
            return book.get_current_page() == number
    return False


def save():
    window = dialog().get_window()
    pixels = Gdk.pixbuf_get_from_window(window, 0, 0, window.get_width(), window.get_height())
    pixels.savev(picture, "png", [], [])
    dialog().response(Gtk.ResponseType.CANCEL)


# The options of the queue arrive some time after it has been selected, and add a tab.
steps = [select_queue, show_tab]
polls = 0


def poll():
    global polls
    polls += 1
    if polls > POLLS:
        sys.exit("dialog.py: there is no queue labels, or no tab " + tab)
    if steps[0]():
        steps.pop(0)
    if steps:
        return True
    GLib.timeout_add(1000, save)  # after the change of tabs has been drawn
    return False


GLib.timeout_add(100, poll)
operation = Gtk.PrintOperation(n_pages=1, embed_page_setup=True)
operation.run(Gtk.PrintOperationAction.PRINT_DIALOG, None)
