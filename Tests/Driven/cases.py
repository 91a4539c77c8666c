"""The cases of scripts/check-app, in their order: each goes on where the one before it ended."""
import time, traceback

import screen
from agents import agents_ask
from controls import every_control
from desktop import wait_for
from driving import App
from effects import effects
from life import an_hour_asleep, headless_keeper, starts_at_the_same_moment, the_bus_goes, the_desktop_fails
from sections import (alert_switches, cleaning_up, forcing_a_process, periods, quitting_a_process, ranges,
                      removing_a_leftover, share_card, sorting, sound, stopping_a_server, stopping_idle_servers)
from shell import (another_language, first_launch, links, panel, quitting, second_start, sections_by_keys,
                   sections_by_pointer, settings_window, the_items_menu)
from surroundings import SURROUNDINGS
from widget import the_widget, the_widgets_parts, the_widgets_place

CASES = [the_widget, the_widgets_place, first_launch, sections_by_pointer, sections_by_keys, ranges, sorting,
         settings_window, another_language, the_items_menu, share_card, periods, panel, links, the_widgets_parts,
         second_start, quitting_a_process, forcing_a_process, agents_ask, cleaning_up, stopping_a_server,
         removing_a_leftover, alert_switches, sound, the_desktop_fails, quitting, headless_keeper,
         stopping_idle_servers, every_control, effects, an_hour_asleep, starts_at_the_same_moment, *SURROUNDINGS,
         the_bus_goes]
# They start the application by themselves.
STARTERS = (the_widget, the_widgets_place, first_launch, headless_keeper, stopping_idle_servers, every_control,
            effects, an_hour_asleep, starts_at_the_same_moment, *SURROUNDINGS, the_bus_goes)


def wanted(case, chosen):
    """By its name or its file's; all where none is chosen."""
    return not chosen or case.__name__ in chosen or case.__module__ in chosen


def run(desktop, programs, chosen):
    app = App(desktop, programs)
    failed = False
    try:
        for case in CASES:
            if not wanted(case, chosen):
                continue
            start = time.monotonic()
            try:
                if app.process and case in STARTERS:  # the one before it was chosen alone, or failed
                    app.process.kill()
                    app.ended()
                if app.process is None and case not in STARTERS:
                    app.start("korvell://page/overview")
                    wait_for("the window", lambda: screen.window("Korvell"))
                case(app)
                print(f"{case.__name__}: {time.monotonic() - start:.1f} s", flush=True)
            except Exception:
                failed = True
                print(f"{case.__name__}: FAILED\n{traceback.format_exc()[-2000:]}", flush=True)
                print("\n".join(screen.outline())[:8000], flush=True)
    finally:
        if app.process and app.process.poll() is None:
            app.process.terminate()
            app.ended()
    complaints = app.complaints()
    if complaints:
        print("standard error of the application:\n" + complaints[:20_000])
    return 1 if failed or complaints else 0
