"""Where results go, what is in them, and what heatmap leaves when they cannot be written."""

import os
import pathlib
import shutil
import signal
import subprocess
import time
import unittest

from case import BRACKET, HEATMAP, SINK, Case, Result, box

# Root may do everything but for this; another user could not even come here if the clone is root's own.
UNPRIVILEGED = (["setpriv", "--bounding-set=-dac_override,-dac_read_search"]
                if os.geteuid() == 0 and shutil.which("setpriv") else [])


class Files(Case):
    def test_writes_what_viewers_look_for(self):
        self.stdout_of(SINK, "--out", "new/dir", "--hot", "z-", "--cold", "z+", "--html", "--edge", "none")
        directory = self.work / "new/dir"
        self.assertEqual(sorted(p.name for p in directory.iterdir()),
                         ["heatmap.html", "heatmap.json", "heatmap.mtl", "heatmap.obj", "viridis.PNG"])
        self.assertEqual((directory / "heatmap.obj").read_text().splitlines()[0], "mtllib heatmap.mtl")
        self.assertIn("map_Kd viridis.PNG", (directory / "heatmap.mtl").read_text().splitlines())
        self.assertEqual((directory / "heatmap.html").read_text().count("data-name="), 4)
        result = Result(directory / "heatmap")
        self.assertEqual(len(result.vertices), len(result.values))
        # A closed surface: six triangles meet at a vertex on average, less what its handles add.
        self.assertAlmostEqual(len(result.triangles) / len(result.vertices), 2, delta=0.1)

    def test_prescribed_values_keep_off_the_ends_of_the_ramp(self):
        self.stdout_of(SINK, "--out", "out", "--hot", "z-", "--cold", "z+", "--edge", "none")
        shares = [float(line.split()[1]) for line in (self.work / "out/heatmap.obj").read_text().splitlines()
                  if line.startswith("vt ")]
        self.assertAlmostEqual(min(shares), 0.001, delta=1e-5)
        self.assertAlmostEqual(max(shares), 0.999, delta=1e-5)

    def test_legend_holds_any_words(self):
        result = self.solve(SINK, "--hot-value", "100", "--cold-value", "20", "--title", 'a "sink" \\ 5 µm',
                            "--unit", "°C", "--field", b"T\t\xff".decode(errors="surrogateescape"), "--edge", "none")
        expected = {"quor": 1, "title": 'a "sink" \\ 5 µm', "unit": "°C", "minimum": 20, "maximum": 100,
                    "field": "T\t\ufffd"}
        self.assertEqual({key: result.json.get(key) for key in expected}, expected)

    def test_range_gives_a_value_the_same_colour_in_two_results(self):
        hot = self.solve(SINK, "--hot-value", "100", "--cold-value", "20", "--name", "hot", "--edge", "none")
        warm = self.solve(SINK, "--hot-value", "60", "--cold-value", "20", "--range", "20", "100", "--name", "warm",
                          "--edge", "none")
        self.assertEqual(warm.json["maximum"], 100)
        self.assertEqual(len(warm.vertices), len(hot.vertices) + 3)  # a triangle without size
        self.assertEqual(warm.vertices[-3:], 3 * warm.vertices[:1])
        for vertex in range(len(hot.vertices)):
            self.assertAlmostEqual((hot.values[vertex] - 20) / 2 + 20, warm.values[vertex], delta=0.01)


class Assets(Case):
    def test_an_installed_program_takes_those_beside_it(self):
        (self.work / "bin").mkdir()
        (self.work / "share/quor").mkdir(parents=True)
        program = shutil.copy(HEATMAP, self.work / "bin/heatmap")
        ramp = b"\x89PNG\r\n\x1a\nof the installation"
        self.write("share/quor/viridis.PNG", ramp)
        self.write("share/quor/viewer.html", "<p><!-- result --></p>")
        self.write("part.obj", box((0, 0, 0), (1, 1, 1)))
        libraries = pathlib.Path(HEATMAP).resolve().parents[2] / "src/kit"
        done = subprocess.run([program, "part.obj", "--out", "out", "--html", "--edge", "none"], cwd=self.work, check=False,
                              capture_output=True, env={**os.environ, "LD_LIBRARY_PATH": str(libraries)})
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual((self.work / "out/viridis.PNG").read_bytes(), ramp)
        self.assertRegex((self.work / "out/heatmap.html").read_text(), "^<p><script .*data-name=\"heatmap.obj\"")


class Refusals(Case):
    def test_names_that_cannot_be_files(self):
        self.refuses_at_once(1, "plain file name", SINK, "--out", "o", "--name", "a/b")
        self.refuses_at_once(1, "plain file name", SINK, "--out", "o", "--name", "..")
        self.refuses_at_once(1, "name is too long", SINK, "--out", "o", "--name", "n" * 246)

    def test_places_that_are_taken(self):
        part = self.write("part.obj", box((0, 0, 0), (1, 1, 1)))
        self.refuses_at_once(1, "part.obj is not a directory", SINK, "--out", "part.obj/o")
        for result in ("heatmap.obj", "heatmap.mtl", "heatmap.json", "heatmap.html", "viridis.PNG"):
            with self.subTest(result):
                (self.work / "locked" / result).mkdir(parents=True)
                self.refuses_at_once(1, f"{result}: it is a directory", SINK, "--out", "locked", "--html")
                (self.work / "locked" / result).rmdir()
        before = part.read_bytes()
        self.refuses_at_once(1, "would replace the part", part, "--out", ".", "--name", "part")
        self.assertEqual(part.read_bytes(), before)

    def test_ramps_that_are_none(self):
        self.write("empty.png", "")
        self.write("text.png", "not an image")
        self.refuses_at_once(1, "colour ramp nowhere.png: no such file. Give another image", SINK, "--out", "o",
                             "--ramp", "nowhere.png")
        for ramp in ("empty.png", "text.png"):
            self.refuses_at_once(1, f"colour ramp {ramp}: it is not a PNG", SINK, "--out", "o", "--ramp", ramp)

    def test_permissions(self):
        secret = self.write("secret.obj", box((0, 0, 0), (1, 1, 1)))
        secret.chmod(0)
        (self.work / "locked_up").mkdir(mode=0o555)
        for words, arguments in [("permission denied", [SINK, "--out", "locked_up"]),
                                 ("secret.obj: permission denied", ["secret.obj", "--out", "o"]),
                                 ("ramp secret.obj: permission denied",
                                  [SINK, "--out", "o", "--ramp", "secret.obj"])]:
            with self.subTest(words):
                done = subprocess.run([*UNPRIVILEGED, HEATMAP, *arguments], cwd=self.work, capture_output=True,
                                      check=False)
                self.assertEqual(done.returncode, 1, done.stderr)
                self.assertIn(words, done.stderr.decode())

    def test_leaves_no_probe(self):
        self.refuses(1, "no such file", "missing.stl", "--out", ".")
        self.assertEqual(list(self.work.iterdir()), [])

    def test_a_full_disk_leaves_the_files_of_before(self):
        # A page needs more than these 512 KB.
        self.write("part.obj", box((0, 0, 0), (1, 1, 1)))
        (self.work / "small").mkdir()
        self.write("small/heatmap.html", "before")
        done = subprocess.run(["sh", "-c", 'ulimit -f 1024; trap "" XFSZ; exec "$@"', "sh", HEATMAP, "part.obj",
                               "--out", "small", "--html", "--edge", "1"], cwd=self.work, capture_output=True, check=False)
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn("cannot write small/heatmap.html: the disk is full", done.stderr.decode())
        self.assertEqual((self.work / "small/heatmap.html").read_text(), "before")
        self.assertEqual([p.name for p in (self.work / "small").iterdir() if "part" in p.name], [])


class Interrupt(Case):
    def test_leaves_a_sentence_and_no_file(self):
        for stage, arguments in [(b"solve ", ["--within", "1e-6"]), (b"build ", ["--edge", "0.5"])]:
            with self.subTest(stage):
                process = subprocess.Popen([HEATMAP, BRACKET, "--out", "stopped", *arguments], cwd=self.work,
                                           stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                said = b""
                while stage not in said:
                    byte = process.stdout.read(1)
                    self.assertTrue(byte, said)
                    said += byte
                time.sleep(0.1)  # any moment will do
                process.send_signal(signal.SIGINT)
                _, error = process.communicate(timeout=120)
                self.assertEqual(process.returncode, 130, error)
                self.assertEqual(error, b"heatmap: stopped; nothing was written\n")
                self.assertFalse((self.work / "stopped").exists())


if __name__ == "__main__":
    unittest.main()
