"""What the tests of the demo share."""

import os
import subprocess
import sys
import tempfile
import unittest

from volumes import fingerprint

RESLICE = os.path.abspath(sys.argv[1])
BULK = sys.argv[2] == 'bulk'  # built with volux_resample
BRAIN = {'planes.png', 'oblique.png', 'borders.png', 'montage.png'}
SKULL = {'skull-resized.png', 'skull-cuts.png', 'skull-rays.png'}
if BULK:
    BRAIN |= {'flight.gif', 'warp.png'}
    SKULL |= {'skull-maximum.png', 'skull-round.gif'}


class Demo(unittest.TestCase):
    """A scratch folder for each test, with a blank in its name."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix='re slice ')
        self.addCleanup(scratch.cleanup)
        self.folder = scratch.name
        self.output = os.path.join(self.folder, 'pictures')

    def file(self, name, contents):
        path = os.path.join(self.folder, name)
        with open(path, 'wb') as out:
            out.write(contents)
        return path

    def run_demo(self, *arguments, **options):
        return subprocess.run([RESLICE, *arguments], capture_output=True, text=True,
                              errors='replace', check=False, timeout=300, **options)

    def pictures(self, folder=None):
        """The pictures by name; fails if one is not whole or anything else is there."""
        folder = folder or self.output
        found = {}
        for name in os.listdir(folder) if os.path.isdir(folder) else []:
            self.assertTrue(name.endswith(('.png', '.gif')) and name[0] != '.', name)
            with open(os.path.join(folder, name), 'rb') as picture:
                found[name] = fingerprint(picture.read())
        return found

    def draw(self, contents, name='head.nii', *options):
        """Makes the pictures of a volume that is sound."""
        folder = tempfile.mkdtemp(dir=self.folder)
        run = self.run_demo('--output', folder, *options, self.file(name, contents))
        self.assertEqual((run.returncode, run.stderr), (0, ''))
        return self.pictures(folder)

    def assert_refused(self, run, *words, status=1):
        self.assertEqual(run.returncode, status, run.stderr)
        self.assertRegex(run.stderr, r"\Areslice: [^\n]+\.\n\Z")
        for word in words:
            self.assertIn(word, run.stderr)

    def refuse(self, contents, *words, name='head.nii', options=()):
        """Asserts one sentence that names the file and the reason, and no picture."""
        path = self.file(name, contents)
        run = self.run_demo('--output', self.output, *options, path)
        self.assert_refused(run, path, *words)
        self.assertEqual(self.pictures(), {})
