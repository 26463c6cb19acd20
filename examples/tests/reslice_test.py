"""Runs the demo on sound and unsound volumes.

Usage: reslice_test.py RESLICE bulk|plain [TestCase[.test_name] ...]
"""

import os
import pty
import random
import resource
import shutil
import signal
import subprocess
import sys
import time
import unittest

import volumes
from demo import BRAIN, BULK, RESLICE, SKULL, Demo
from picture_tests import Layout, Movement, Orientation  # for unittest to find
from volumes import CODES, EXTENT, compressed, header, inv3, nifti, scene, slim, voxels


def drop_root():
    os.setgroups([])
    os.setgid(65534)
    os.setuid(65534)


def succeeds(*command, preexec_fn):
    try:
        return subprocess.run(command, capture_output=True, check=False,
                              preexec_fn=preexec_fn).returncode == 0
    except (OSError, subprocess.SubprocessError):
        return False


class SoundVolumes(Demo):
    drawn = {}

    def reference(self):
        """Pictures of the scene, stored as it is; drawn once."""
        if not self.drawn:
            self.drawn.update(self.draw(slim('h')))
            self.assertEqual(set(self.drawn), BRAIN)
        return dict(self.drawn)

    def test_every_element_type_and_byte_order_gives_the_same_pictures(self):
        expected = self.reference()
        # The constant outside is the nearest value of the type, as is each voxel of the flight, so
        # that they differ from float on.
        shared = {name: picture for name, picture in expected.items()
                  if name not in ('borders.png', 'flight.gif')}
        for kind, order in [(kind, '>') for kind in CODES] + [('d', '<')]:
            with self.subTest(kind=kind, order=order):
                drawn = self.draw(slim(kind, order))
                same = shared if kind in 'fd' else expected
                self.assertEqual(same | drawn, drawn)

    def test_pictures_differ_where_voxels_do(self):
        other = voxels(value=lambda x, y, z: scene(x, y, z) + 40 * (x == 7 and y == 5 and z == 4))
        self.assertNotEqual(self.draw(slim('h', values=other))['planes.png'],
                            self.reference()['planes.png'])

    def test_compressed_file(self):
        # niftiio finds a file by its name as well; the plain neighbour is another volume.
        self.file('head.nii', slim('h', values=[5] * 1386))
        packed = self.draw(compressed(slim('h')), 'head.nii.gz')
        self.assertEqual(packed, self.draw(slim('h'), 'head.nii.gz'))
        self.assertEqual(set(packed), BRAIN)

    def test_scaling_is_applied_to_what_is_shown(self):
        # A window follows the intensities, so that only a change of their order is seen.
        shown = voxels(value=lambda x, y, z: 30 - 0.5 * scene(x, y, z))
        stored = slim('h', slope=-0.5, intercept=30.0)
        drawn, expected = self.draw(stored), self.draw(slim('d', values=shown))
        self.assertNotEqual(drawn['planes.png'], self.reference()['planes.png'])
        for name in BRAIN - {'borders.png', 'flight.gif'}:  # they hold values of the stored type
            self.assertEqual(drawn[name], expected[name])

    def test_first_volume_of_a_series(self):
        series = slim('h', values=voxels() + voxels(value=lambda x, y, z: x),
                      extent=(*EXTENT, 2), spacing=(*volumes.SLIM, 3.0))
        self.assertEqual(self.draw(series), self.reference())

    def test_flat_volumes_and_single_voxels(self):
        for extent in (1, 1, 1), (20, 1, 1), (1, 30, 5), (6, 5), (7,):
            with self.subTest(extent=extent):
                full = (*extent, 1, 1)[:3]
                self.assertEqual(set(self.draw(slim('f', values=voxels(full), extent=extent))),
                                 BRAIN)

    def test_voxels_that_are_no_numbers(self):
        values = [float('nan'), float('inf'), -float('inf'), 3e38] * 25
        self.assertEqual(set(self.draw(slim('f', values=values, extent=(4, 5, 5)))), BRAIN)

    def test_tiny_and_huge_spacing(self):
        for spacing in (1e-30, 1e-30, 8e-30), (1e30, 1e30, 8e30), (1e-6, 1.0, 1e6):
            with self.subTest(spacing=spacing):
                self.assertEqual(set(self.draw(nifti('B', spacing=spacing))), BRAIN)

    def test_inv3_project(self):
        self.assertEqual(set(self.draw(inv3(), 'head.inv3', '--ct')), SKULL)

    def test_inv3_project_of_unequal_edges(self):
        thick = inv3(main_plist=volumes.plist((6, 12, 10), (1, 1, 50)))
        self.assertEqual(set(self.draw(thick, 'head.inv3', '--ct')), SKULL)

    def test_synthetic_head(self):
        run = self.run_demo('--output', self.output, '--synthetic')
        self.assertEqual((run.returncode, run.stderr), (0, ''))
        self.assertEqual(set(self.pictures()), BRAIN)
        lines = run.stdout.splitlines()
        if not BULK:
            self.assertIn('without volux_resample', lines.pop())
        self.assertEqual(len(lines), len(BRAIN))
        for line in lines:
            self.assertRegex(line, r'\.(png|gif) +\d+ x \d+ +\d+\.\d\d s  \w')

    @unittest.skipUnless(BULK, 'without volux_resample')
    def test_label_map(self):
        self.assertEqual(set(self.draw(slim('h'), 'labels.nii', '--labels')), {'labels.png'})

    @unittest.skipUnless(BULK, 'without volux_resample')
    def test_label_map_of_any_numbers(self):
        values = [float('nan'), float('inf'), -1e308, 0.5, 1e308, -3.0] * 231
        self.assertEqual(set(self.draw(slim('d', values=values), 'labels.nii', '--labels')),
                         {'labels.png'})


class UnsoundVolumes(Demo):
    def test_missing_file(self):
        path = os.path.join(self.folder, 'none.nii')
        for options in (), ('--ct',):
            self.assert_refused(self.run_demo('--output', self.output, *options, path), path,
                                'no such file')

    def test_empty_name_of_a_file(self):
        for arguments in ('',), ('--ct', ''), ('--', ''):
            run = self.run_demo('--output', self.output, *arguments)
            self.assert_refused(run, "'': no such file")
            self.assertEqual(self.pictures(), {})

    def test_folder_in_place_of_a_file(self):
        self.assert_refused(self.run_demo(self.folder), self.folder, 'not a regular file')

    def test_foreign_files(self):
        for contents in b'', b'x', b'Some text, in place of a volume.\n' * 100, bytes(4000):
            self.refuse(contents, 'not a NIfTI-1 file')
            self.refuse(contents, 'not a NIfTI-1 file', name='head.nii.gz')

    def test_truncated_file(self):
        data = nifti('h')
        for length in 100, 347:
            self.refuse(data[:length], 'not a NIfTI-1 file')
        for length in 348, 352, 353, len(data) - 1:
            self.refuse(data[:length], f'ends after {length} of {len(data)} bytes')

    def test_truncated_compressed_file(self):
        generator = random.Random(1)
        data = compressed(nifti('d', values=[generator.random() for _ in voxels()]))
        for length in 12, 300, len(data) // 2, len(data) - 9, len(data) - 1:
            with self.subTest(length=length):
                self.refuse(data[:length], name='head.nii.gz')

    def test_damaged_compressed_file(self):
        data = bytearray(compressed(nifti('h')))
        data[-6] ^= 1  # in the checksum
        self.refuse(bytes(data), 'damaged', name='head.nii.gz')

    def test_unsupported_element_types(self):
        for code, name in ((256, 'INT8'), (1024, 'INT64'), (1280, 'UINT64'), (32, 'COMPLEX64'),
                           (128, 'RGB24'), (1, 'BINARY'), (0, 'NONE'), (77, '')):
            self.refuse(header(code=code) + bytes(50000), name, 'is not supported')

    def test_senseless_headers(self):
        for reason, fields in (('0 dimensions', {'dimensions': -1, 'extent': EXTENT}),
                               ('9 dimensions', {'dimensions': 9}),
                               ('extent 0', {'extent': (0, 5, 5)}),
                               ('extent -3', {'extent': (5, 5, -3)}),
                               ('spacing nan', {'spacing': (1, float('nan'), 1)}),
                               ('spacing inf', {'spacing': (float('inf'), 1, 1)}),
                               ('spacing 0', {'spacing': (1, 1, 0)}),
                               ('spacing -1', {'spacing': (1, 1, -1)}),
                               ('at byte nan', {'offset': float('nan')}),
                               ('at byte 0', {'offset': 0.0}),
                               ('at byte -1', {'offset': -1.0}),
                               ('spacing -3e+38.', {'spacing': (1, -3e38, 1)}),
                               ('at byte 1e+30.', {'offset': 1e30}),
                               ('bits', {'bits': 16}),
                               ('second file', {'magic': b'ni1\0'}),
                               ('not a NIfTI-1 file', {'magic': b'nix\0'}),
                               ('NIfTI-2', {'size': 540}),
                               ('not a NIfTI-1 file', {'size': 347})):
            with self.subTest(reason=reason):
                reason = reason.replace('0 dimensions', '-1 dimensions')
                self.refuse(header(**fields) + bytes(50000), reason)

    def test_extents_beyond_all_memory(self):
        endless = header(code=64, bits=64, extent=(32767, 32767, 32767))
        self.refuse(endless + bytes(1000), 'ends after')

    def test_names_of_another_suffix(self):
        for name in 'head.dat', 'head.Nii', 'head.NII', 'head.nii.GZ', 'head.nii.gz.bak', 'nii':
            for contents in nifti(), compressed(nifti()):
                self.refuse(contents, 'ends in .nii or .nii.gz', name=name)

    def test_compressed_file_with_the_name_of_a_plain_one(self):
        self.refuse(compressed(nifti()), 'compressed', 'must end in .nii.gz')

    def test_unsound_projects(self):
        whole = inv3()

        def told(*listed):
            return inv3(main_plist=volumes.plist(*listed))
        for reason, contents in (('not a tar archive', b'text ' * 300),
                                 ('no main.plist', b''),
                                 ('no main.plist', inv3(main_plist=None)),
                                 ('no main.plist', inv3(matrix_dat=None)),
                                 ('bytes', inv3(matrix_dat=b'12')),
                                 ('shape', told((1, 2), (1, 1, 1))),
                                 ('shape', told((0, 2, 2), (1, 1, 1))),
                                 ('shape', told((1e99, 2, 2), (1, 1, 1))),
                                 ('spacing', told((6, 12, 10), (1, 0, 1))),
                                 ('spacing', told((6, 12, 10), (1e-300, 1, 1))),
                                 ('spacing', told((6, 12, 10), (1e300, 1e300, 1e300))),
                                 ('16-bit', told((6, 12, 10), (1, 1, 1), 'x')),
                                 ('16-bit', inv3(main_plist=b'<key>shape</key>')),
                                 ('', whole[:len(whole) // 2])):
            with self.subTest(reason=reason):
                self.refuse(contents, reason, name='head.inv3', options=('--ct',))

    def test_projects_too_large_for_equal_edges(self):
        flat = inv3(main_plist=volumes.plist((2, 2000, 2000), (1, 1, 50)),
                    matrix_dat=bytes(2 * 2 * 2000 * 2000))
        for size, contents in (('10 x 12 x 6e+09', inv3(main_plist=volumes.plist(
                                   (6, 12, 10), (1, 1, 1e9)))),
                               ('10 x 1.2e+51 x 6e+50', inv3(main_plist=volumes.plist(
                                   (6, 12, 10), (1e-50, 1, 1)))),
                               ('2000 x 2000 x 100', flat)):
            with self.subTest(size=size):
                self.refuse(contents, size, 'equal edges', name='head.inv3', options=('--ct',))

    def test_headers_of_random_bytes(self):
        """Whatever a header says, the answer is one sentence. The output is a file, so that
        sound headers end early too."""
        generator = random.Random(7)
        blocked = self.file('blocked', b'')
        for _ in range(300):
            data = bytearray(nifti('h', order=generator.choice('<>')))
            for _ in range(generator.randint(1, 6)):
                data[generator.randrange(352)] = generator.choice((0, 1, 127, 128, 255,
                                                                   generator.randrange(256)))
            run = self.run_demo('--output', blocked, self.file('random.nii', bytes(data)))
            self.assert_refused(run)


class Surroundings(Demo):
    def test_wrong_command_lines(self):
        for arguments in ([], ['--none', 'x'], ['a.nii', 'b.nii'], ['--output'], ['--ct'],
                          ['--synthetic', 'a.nii'], ['-x']):
            run = self.run_demo(*arguments, cwd=self.folder)
            self.assertEqual(run.returncode, 2, arguments)
            self.assertRegex(run.stderr, r'\Areslice: [^\n]+\.\nUsage: ')
            self.assertEqual(os.listdir(self.folder), [])

    def test_help(self):
        run = self.run_demo('--help')
        self.assertEqual((run.returncode, run.stderr), (0, ''))
        self.assertIn('Usage: ', run.stdout)
        self.assertIn('unless the slope is 0', run.stdout)

    def test_output_that_cannot_be_a_folder(self):
        volume = self.file('head.nii', nifti())
        blocked = self.file('blocked', b'keep')
        for output in blocked, blocked + '/below', '/proc/none':
            self.assert_refused(self.run_demo('--output', output, volume), output)
        with open(blocked, 'rb') as file:
            self.assertEqual(file.read(), b'keep')

    def test_folder_without_permission(self):
        volume = self.file('head.nii', nifti())
        os.mkdir(self.output, 0o555)
        os.chmod(self.folder, 0o755)
        # Root may write anywhere.
        user = drop_root if os.geteuid() == 0 else None
        if not (succeeds(RESLICE, '--help', preexec_fn=user) and
                succeeds('cat', volume, preexec_fn=user)):
            self.skipTest('an ordinary user can reach neither the program nor a volume')
        run = self.run_demo('--output', self.output, volume, preexec_fn=user)
        self.assert_refused(run, 'planes.png', 'permission denied')

    def test_too_little_memory(self):
        def restrict():
            resource.setrlimit(resource.RLIMIT_AS, (100 << 20, 100 << 20))
        if not succeeds(RESLICE, '--help', preexec_fn=restrict):
            self.skipTest('the program does not start in 100 MB, as under a sanitizer')
        large = compressed(header(code=64, bits=64, extent=(256, 256, 256)) + bytes(8 << 24))
        path = self.file('head.nii.gz', large)
        run = self.run_demo('--output', self.output, path, preexec_fn=restrict)
        self.assert_refused(run, 'not enough memory', path)

    def test_picture_whose_name_is_taken_by_a_folder(self):
        os.makedirs(os.path.join(self.output, 'planes.png'))
        run = self.run_demo('--output', self.output, self.file('head.nii', nifti()))
        self.assert_refused(run, 'planes.png', 'is a directory')
        self.assertEqual(os.listdir(self.output), ['planes.png'])

    def test_full_disk(self):
        """A limit on the size of files replaces it: the write fails in the same way."""
        volume = self.file('head.nii', nifti())
        run = self.run_demo('--output', self.output, volume, preexec_fn=lambda: resource.setrlimit(
            resource.RLIMIT_FSIZE, (3000, 3000)))
        self.assert_refused(run, 'planes.png', 'file too large')
        self.assertEqual(os.listdir(self.output), [])

    def test_full_standard_output(self):
        with open('/dev/full', 'w', encoding='ascii') as full:
            run = subprocess.run([RESLICE, '--output', self.output, self.file('head.nii', nifti())],
                                 stdout=full, stderr=subprocess.PIPE, text=True, check=False)
        self.assert_refused(run, 'standard output', 'no space left')

    @unittest.skipUnless(BULK, 'without volux_resample')
    def test_full_disk_under_a_picture_that_moves(self):
        volume = self.file('head.nii', slim())
        self.assertEqual(self.run_demo('--output', self.output, volume).returncode, 0)
        sizes = {name: os.path.getsize(os.path.join(self.output, name)) for name in BRAIN}
        last = sizes.pop('flight.gif')
        self.assertGreater(last - 1, max(sizes.values()))
        os.remove(os.path.join(self.output, 'flight.gif'))
        run = self.run_demo('--output', self.output, volume, preexec_fn=lambda: resource.setrlimit(
            resource.RLIMIT_FSIZE, (last - 1, last - 1)))
        self.assert_refused(run, 'flight.gif', 'file too large')
        self.assertEqual(set(self.pictures()), BRAIN - {'flight.gif'})

    def interrupt(self, number, sight, *options):
        """Sends the signal as soon as the path is there."""
        process = subprocess.Popen([RESLICE, '--output', self.output, '--synthetic', *options],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        while process.poll() is None and not os.path.exists(sight):
            time.sleep(0.01)
        process.send_signal(number)
        _, sentences = process.communicate(timeout=60)
        return subprocess.CompletedProcess([], process.returncode, '', sentences)

    def test_interrupt_leaves_whole_pictures_only(self):
        cuts = os.path.join(self.output, 'skull-cuts.png')
        for number in signal.SIGINT, signal.SIGTERM:
            self.assert_refused(self.interrupt(number, self.output, '--ct'), 'interrupted',
                                'skull-resized')
            self.assertEqual(self.pictures(), {})
            self.assert_refused(self.interrupt(number, cuts, '--ct'), 'interrupted', 'skull-rays')
            self.assertEqual(set(self.pictures()), {'skull-resized.png', 'skull-cuts.png'})
            shutil.rmtree(self.output)

    @unittest.skipUnless(BULK, 'without volux_resample')
    def test_interrupt_of_the_flight_leaves_no_part_of_it(self):
        run = self.interrupt(signal.SIGINT, os.path.join(self.output, 'montage.png'))
        self.assert_refused(run, 'interrupted', 'flight.gif')
        self.assertEqual(set(self.pictures()), BRAIN - {'flight.gif'})

    def test_bar_on_a_terminal_only(self):
        try:
            ours, theirs = pty.openpty()
        except OSError as error:
            self.skipTest(f'there is no terminal to be had: {error}')
        process = subprocess.Popen([RESLICE, '--output', self.output,
                                    self.file('head.nii', nifti())],
                                   stdout=subprocess.DEVNULL, stderr=theirs)
        os.close(theirs)
        shown = b''
        try:
            while part := os.read(ours, 1 << 16):
                shown += part
        except OSError:  # how a terminal ends
            pass
        os.close(ours)
        self.assertEqual(process.wait(timeout=60), 0)
        for name in BRAIN:
            self.assertIn(name.encode(), shown)
        self.assertIn(b'#] 100 %', shown)


if __name__ == '__main__':
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)  # says why a test is skipped
