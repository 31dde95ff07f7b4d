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


def test_states_and_containers_only_go_back_to_their_own_graphics():
    import orvane.pyfigura as f
    g1 = f.Graphics.from_image(f.Bitmap(4, 4))
    g2 = f.Graphics.from_image(f.Bitmap(4, 4))
    foreign = [(g1.restore, g2.save(), "state"), (g1.end_container, g2.begin_container(), "container")]
    for restore, token, what in foreign:
        try:
            restore(token)
        except RuntimeError as e:
            assert str(e) == f"Proxy error(System.ArgumentException): the {what} was saved by another Graphics"
        else:
            raise AssertionError(f"a foreign {what} was accepted")
    # Their own tokens still work, from every overload that makes one.
    g1.restore(g1.save())
    g1.end_container(g1.begin_container())
    g1.end_container(g1.begin_container(f.RectangleF(0, 0, 2, 2), f.RectangleF(0, 0, 1, 1), 2))
    g1.end_container(g1.begin_container(f.Rectangle(0, 0, 2, 2), f.Rectangle(0, 0, 1, 1), 2))


def test_null_arguments_the_native_library_would_dereference_are_refused():
    import orvane.pyfigura as f
    path = f.drawing2d.GraphicsPath()
    path.add_rectangle(f.Rectangle(0, 0, 2, 2))
    iterator = f.drawing2d.GraphicsPathIterator(path)
    calls = [lambda: iterator.next_marker(None), lambda: iterator.next_subpath(None, []),
             lambda: f.Bitmap(2, 2).save(stream=None, format=f.imaging.ImageFormat.png),
             lambda: f.Image.from_stream(None)]
    texts = []
    for call in calls:
        try:
            call()
        except RuntimeError as e:
            texts.append(str(e))
    assert texts == ["Proxy error(System.ArgumentNullException): Value cannot be null. (Parameter 'path')"] * 2 + \
                    ["Proxy error(System.ArgumentNullException): Value cannot be null. (Parameter 'stream')"] * 2
    # An empty iterator answers 0 before it would look at the path, as System.Drawing does.
    empty = f.drawing2d.GraphicsPathIterator(f.drawing2d.GraphicsPath())
    assert (empty.next_marker(None), empty.next_subpath(None, [])) == (0, 0)
