"""What the process sees over its life: native memory coming back, dispose(), and fork."""
import os
import subprocess
import textwrap

import pytest

import orvane.pyfigura as f
from conftest import PYTHON, _clean_environment

RSS_NOW = "int(open('/proc/self/statm').read().split()[1]) * 4096 // 2**20"


@pytest.mark.skipif("libasan" in os.environ.get("LD_PRELOAD", ""),
                    reason="the sanitizer's allocator holds freed memory in quarantine")
class TestNativeMemory:
    def test_dropped_bitmaps_do_not_pile_up(self, fresh_python):
        # 400 x 4 MB of touched pixels: about 1.6 GB if the managed collector never ran.
        run = fresh_python(textwrap.dedent("""
            import resource, orvane.pyfigura as f
            for _ in range(400):
                f.Bitmap(1000, 1000).set_pixel(0, 0, f.Color.red)
            print(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss // 1024)
        """))
        assert run.returncode == 0, run
        assert int(run.stdout) < 600, run

    def test_gc_collect_also_collects_the_managed_side(self, fresh_python):
        run = fresh_python(textwrap.dedent(f"""
            import gc, orvane.pyfigura as f
            keep = [f.Bitmap(1000, 1000) for _ in range(60)]
            del keep
            before = {RSS_NOW}
            gc.collect()
            print(before - {RSS_NOW})
        """))
        assert run.returncode == 0, run
        assert int(run.stdout) > 150, run  # the 240 MB of pixels went back at once


class TestDispose:
    @pytest.mark.parametrize("make", [lambda: f.Bitmap(2, 2), lambda: f.Pen(f.Color.red),
                                      lambda: f.Graphics.from_image(f.Bitmap(2, 2)), lambda: f.StringFormat()],
                             ids=["Bitmap", "Pen", "Graphics", "StringFormat"])
    def test_dispose_is_leaving_a_with_block_and_can_be_repeated(self, make):
        disposed, left = make(), make()
        assert disposed.dispose() is None and disposed.dispose() is None
        with left:
            pass
        probe = {"Bitmap": "width", "Pen": "width", "Graphics": "dpi_x", "StringFormat": "alignment"}
        name = probe[type(left).__name__]
        errors = []
        for obj in (disposed, left):
            with pytest.raises(Exception) as info:
                getattr(obj, name)
            errors.append((type(info.value), str(info.value)))
        assert errors[0] == errors[1]


FORKED = textwrap.dedent("""
    import os, sys, multiprocessing as mp
    import orvane.pyfigura as f

    def width(n):
        return f.Bitmap(n, 1).width

    def refused(call):
        try:
            call()
        except RuntimeError as e:
            return "spawn" in str(e) and "forked" in str(e)
        return False

    if __name__ == "__main__":
        bitmap = f.Bitmap(3, 3)
        pid = os.fork()
        if pid == 0:
            # Color.red was never used in the parent: its entries would be bound here, in the child.
            ok = all(refused(c) for c in (lambda: f.Bitmap(1, 1), lambda: bitmap.width,
                                          lambda: bitmap.get_pixel(0, 0), lambda: f.Color.red.name))
            del bitmap  # dropping a wrapper in the child must not enter the runtime
            sys.exit(0 if ok else 3)  # a normal exit: no shutdown of the parent's runtime
        _, status = os.waitpid(pid, 0)
        print("child", os.waitstatus_to_exitcode(status))
        with mp.get_context("fork").Pool(1) as pool:
            try:
                pool.apply(width, (4,))
            except RuntimeError as e:
                print("fork pool refused", "spawn" in str(e))
        for method in ("spawn", "forkserver"):
            with mp.get_context(method).Pool(2) as pool:
                print(method, pool.map(width, [5, 6, 7]))
        bitmap.set_pixel(1, 1, f.Color.blue)  # the parent is unharmed
        print("parent", bitmap.get_pixel(1, 1).to_argb() == f.Color.blue.to_argb(), f.Bitmap(8, 8).width)
""")


def test_forked_children_are_refused_and_spawned_workers_draw(tmp_path):
    script = tmp_path / "forked.py"
    script.write_text(FORKED)
    done = subprocess.run([PYTHON, str(script)], capture_output=True, text=True, timeout=120,
                          env=_clean_environment({}))
    assert done.returncode == 0, done.stderr
    assert done.stdout.split("\n")[:-1] == ["child 0", "fork pool refused True", "spawn [5, 6, 7]",
                                            "forkserver [5, 6, 7]", "parent True 8"], done
