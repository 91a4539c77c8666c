"""The application among others, over time, and when its desktop fails."""
import re, signal, sqlite3, subprocess, time

from desktop import wait_for
from driving import check_history, compressed_time, in_section, open_section


def the_desktop_fails(app):
    """The panel and the notifications: gone and back."""
    app.desktop.kill("xfce4-panel")
    app.desktop.kill("dunst")
    time.sleep(1)
    app.alive()
    app.desktop.start_panel()
    wait_for("the item in the new panel", app.desktop.items, 20)
    app.desktop.start("dunst")
    open_section("Health")
    app.alive()


def headless_keeper(app):
    """`korvell run` steps back for the application and comes back, at any second of a minute."""
    with compressed_time(app):
        keeper = subprocess.Popen([app.programs + "/korvell", "run"], env=app.desktop.environment,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        try:
            for pause in (3.1, 4.7, 5.2, 3.9):
                time.sleep(pause)
                app.start("korvell://page/cpu")
                in_section("CPU")
                assert keeper.poll() is None, keeper.stdout.read()
                time.sleep(pause)
                app.process.terminate()
                assert app.ended() == 0
                assert keeper.poll() is None, keeper.stdout.read()
        finally:
            keeper.terminate()
            keeper.wait(10)
    check_history(app, 8)


def an_hour_asleep(app):
    """The lid is shut for an hour while the window shows a live chart."""
    minutes = sqlite3.connect(f"file:{app.desktop.home}/.local/share/korvell/history.sqlite?mode=ro", uri=True)
    before = 5_000  # seconds of quick time that have passed: what is recorded now is a day later than all else
    begin = time.time() + before * 19
    app.desktop.environment["KORVELL_CLOCK_BASE"] = str(time.time_ns() - before * 10**9)
    try:
        with compressed_time(app):
            app.start("korvell://page/cpu")
            in_section("CPU")
            time.sleep(7)
            app.process.send_signal(signal.SIGUSR2)
            time.sleep(7)
            app.alive()
            open_section("Health")
            app.process.terminate()
            assert app.ended() == 0
    finally:
        del app.desktop.environment["KORVELL_CLOCK_BASE"]
    rows = [row[0] for row in minutes.execute("SELECT ts FROM system WHERE ts > ? ORDER BY ts", (begin - 60,))]
    steps = [later - former for former, later in zip(rows, rows[1:])]
    assert len([step for step in steps if 3600 <= step <= 3720]) == 1, f"no hour is missing: {steps}"
    assert all(step == 60 for step in steps if step < 3600), f"a minute is missing: {steps}"


def starts_at_the_same_moment(app):
    """One of them keeps, also where `korvell run` does already; that goes on when the one ends, and is one itself."""
    started, said = [], open(app.lax_log, "ab")

    def start(program, *arguments):
        started.append(subprocess.Popen([app.programs + "/" + program, *arguments], env=app.desktop.environment,
                                        stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL if arguments else said))
        return started[-1]

    def one_is_left(together):
        wait_for("all but one", lambda: [one.poll() for one in together].count(None) == 1, 30)
        return next(one for one in together if one.poll() is None)

    def keeps(process):
        wait_for("its turn to keep", lambda: keeper(app) == process.pid)

    def end(process):
        process.terminate()
        assert process.wait(15) == 0, process.returncode

    def apps_start():
        together = [start("korvell-app") for _ in range(10)]
        left = one_is_left(together)
        assert all(one.returncode == 0 for one in together if one is not left), [one.returncode for one in together]
        keeps(left)
        return left

    try:
        for _ in range(3):
            end(apps_start())
        runs = [start("korvell", "run") for _ in range(4)]
        run = one_is_left(runs)
        assert all(one.returncode == 1 for one in runs if one is not run), [one.returncode for one in runs]
        for _ in range(2):
            keeps(run)
            left = apps_start()
            assert run.poll() is None, run.returncode
            end(left)
        keeps(run)
        end(run)
    finally:
        for one in started:
            if one.poll() is None:
                one.kill()
                one.wait()


def keeper(app):
    """The id of who says that it keeps."""
    with open(app.desktop.home + "/.local/share/korvell/keeper.lock") as file:
        found = re.search(r"\d+", file.read())
    return int(found[0]) if found else None


def the_bus_goes(app):
    app.start("korvell://page/cpu")
    wait_for("the window", lambda: app.desktop.run("xdotool", "search", "--onlyvisible", "--name", "^Korvell$").stdout)
    time.sleep(1)
    app.desktop.kill("dbus-daemon")
    time.sleep(3)
    app.alive()
    app.process.terminate()
    status = app.ended()
    assert status == 0, f"exit {status}"
