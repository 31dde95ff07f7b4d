"""Members that would end the process on this platform refuse with a managed exception instead."""


def test_screen_copy_without_display_is_a_proxy_error(fresh_python):
    run = fresh_python(
        "import orvane.pyfigura as f\n"
        "b = f.Bitmap(4, 4)\n"
        "with f.Graphics.from_image(b) as g:\n"
        "    for args in [(f.Point(0, 0), f.Point(0, 0), f.Size(1, 1)), (0, 0, 0, 0, f.Size(1, 1))]:\n"
        "        try:\n"
        "            g.copy_from_screen(*args)\n"
        "        except RuntimeError as e:\n"
        "            print(e)\n"
        "print('alive')\n",
        env={"DISPLAY": ""})
    assert run.returncode == 0, run
    lines = run.stdout.decode().splitlines()
    assert lines == ["Proxy error(System.PlatformNotSupportedException): copying from the screen needs an "
                     "X display, and DISPLAY is not set"] * 2 + ["alive"]
