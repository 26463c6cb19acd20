"""What the demo's pictures show, and where."""

import math
import os
import struct
import unittest

import volumes
from demo import BULK, Demo
from volumes import EXTENT, nifti, scene, voxels


class Layout(Demo):
    """What is where in a picture."""

    HEAD, TOP = 78, 104  # the first rows of the captions and of the tiles

    def rows(self, name, contents):
        """The picture of that name, row by row."""
        run = self.run_demo('--output', self.output, self.file('head.nii', contents))
        self.assertEqual((run.returncode, run.stderr), (0, ''))
        with open(os.path.join(self.output, name), 'rb') as picture:
            return volumes.greys(picture.read())

    def test_captions_of_narrow_tiles_stand_apart(self):
        for extent in (4, 4, 400), (4000, 4, 4):
            with self.subTest(extent=extent):
                rows = self.rows('planes.png', nifti(extent=extent, values=bytes(math.prod(extent)),
                                                     spacing=(1, 1, 1)))
                paper = rows[0][0]
                inked = [x for x, column in enumerate(zip(*rows[self.HEAD:self.TOP]))
                         if set(column) != {paper}]
                gaps = [right - left for left, right in zip(inked, inked[1:])]
                self.assertEqual(sum(gap >= 14 for gap in gaps), 2)
                self.assertLess(inked[-1], len(rows[0]) - 18)

    def test_narrow_tiles_show_nothing_but_voxels(self):
        rows = self.rows('planes.png', nifti(extent=(4, 4, 400), values=bytes(6400),
                                             spacing=(1, 1, 1)))
        shown = b''.join(rows[self.TOP:])
        self.assertEqual(set(shown), {0, rows[0][0]})
        self.assertEqual(shown.count(0), 4 * 4 + 2 * 4 * 400)

    def test_oblique_plane_is_dark_beyond_the_volume(self):
        bright = voxels(value=lambda x, y, z: 200 * (z > 0))
        rows = self.rows('oblique.png', nifti(values=bright))
        left, right = 20, 20 + 312 - 1  # of the first tile
        self.assertEqual((rows[self.TOP][left], rows[self.TOP][right]), (0, 0))
        self.assertEqual(rows[self.TOP + 60][(left + right) // 2], 255)


class Orientation(Demo):
    """However a file stores its axes, the pictures show the patient the same way."""

    def stored(self, order, signs):
        """The scene with its axes permuted and reversed, and the matrix that says so."""
        extent = tuple(EXTENT[axis] for axis in order)

        def value(*at):
            place = [0, 0, 0]
            for n, axis in enumerate(order):
                place[axis] = at[n] if signs[n] > 0 else extent[n] - 1 - at[n]
            return scene(*place)
        rows = [[0.0] * 4 for _ in range(3)]
        for n, axis in enumerate(order):
            rows[axis][n] = signs[n] * volumes.SPACING[axis]
        spacing = tuple(volumes.SPACING[axis] for axis in order)
        return nifti('h', values=voxels(extent, value), extent=extent, spacing=spacing, rows=rows)

    def test_permuted_and_reversed_axes_give_the_same_pictures(self):
        expected = self.draw(self.stored((0, 1, 2), (1, 1, 1)))
        for order, signs in (((0, 1, 2), (-1, 1, 1)), ((0, 1, 2), (-1, -1, 1)),
                             ((1, 2, 0), (-1, -1, 1)), ((0, 2, 1), (1, -1, 1)),
                             ((2, 0, 1), (1, -1, -1))):
            with self.subTest(order=order, signs=signs):
                self.assertEqual(self.draw(self.stored(order, signs)), expected)

    def planes(self, value):
        """The picture of three planes, row by row."""
        path = self.file('head.nii', nifti('h', values=voxels(value=value)))
        self.assertEqual(self.run_demo('--output', self.output, path).returncode, 0)
        with open(os.path.join(self.output, 'planes.png'), 'rb') as picture:
            return volumes.greys(picture.read())

    # The left edges of the axial, coronal and sagittal tiles, the width of the first two, and
    # their common top.
    AXIAL, CORONAL, SAGITTAL, WIDTH, TOP = 20, 345, 670, 311, 104

    def test_front_right_and_top_of_the_patient_in_the_planes(self):
        rows = self.planes(lambda x, y, z: 200 * (x > 10) + 100 * (y > 7) + 50 * (z > 6))
        high, low = rows[self.TOP + 60], rows[self.TOP + 240]  # far from letters and scales
        for left in self.AXIAL, self.CORONAL, self.SAGITTAL:  # the third one is 305 wide
            self.assertGreater(high[left + 40], high[left + 265])
            self.assertGreater(high[left + 40], low[left + 40])

    def test_letters_stand_on_their_sides(self):
        """R takes more ink than L, and S more than I."""
        rows = self.planes(lambda x, y, z: 1000 * (x + y + z == 0))

        def ink(left, top, width, height):
            return sum(sum(row[left:left + width]) for row in rows[top:top + height])
        for left, height in (self.AXIAL, 306), (self.CORONAL, 400):
            middle = self.TOP + height // 2 - 10
            self.assertGreater(ink(left + 4, middle, 24, 20),
                               1.1 * ink(left + self.WIDTH - 28, middle, 24, 20))
        centre = self.CORONAL + self.WIDTH // 2 - 12
        self.assertGreater(ink(centre, self.TOP + 4, 24, 22),
                           1.1 * ink(centre, self.TOP + 374, 24, 22))

    def test_unknown_orientation_is_told(self):
        for fields in {'orientation': 0}, {'rows': [[0.0] * 4] * 3}:
            path = self.file('head.nii', nifti('B', **fields))
            run = self.run_demo('--output', self.output, path)
            self.assertEqual((run.returncode, run.stderr), (0, ''))
            self.assertIn('orientation unknown', run.stdout)

    def test_rotation_counts_where_the_matrix_is_degenerate(self):
        self.assertEqual(self.draw(nifti(rows=[[0.0] * 4] * 3, qform=1)), self.draw(nifti()))


@unittest.skipUnless(BULK, 'without volux_resample')
class Movement(Demo):
    """Moving pictures."""

    def animation(self, name, *arguments):
        run = self.run_demo('--output', self.output, *arguments)
        self.assertEqual((run.returncode, run.stderr), (0, ''))
        with open(os.path.join(self.output, name), 'rb') as picture:
            return picture.read()

    def test_frames_lie_within_the_picture_and_go_round(self):
        gif = self.animation('flight.gif', self.file('head.nii', volumes.slim()))
        width, height, _, frames = volumes.gif_frames(gif)
        self.assertEqual(len(frames), 48)
        self.assertEqual(frames[0][:4], (0, 0, width, height))
        for left, top, columns, rows, size, codes in frames[:3]:
            self.assertLessEqual((left + columns, top + rows), (width, height))
            self.assertEqual(len(volumes.gif_pixels(size, codes)), columns * rows)
        self.assertIn(b'NETSCAPE2.0\3\1' + struct.pack('<H', 0), gif)

    def test_right_of_the_patient_is_on_the_left(self):
        bright = nifti(values=voxels(value=lambda x, y, z: 200 * (x > EXTENT[0] / 2)))
        gif = self.animation('flight.gif', self.file('head.nii', bright))
        width, _, palette, frames = volumes.gif_frames(gif)
        pixels = volumes.gif_pixels(*frames[0][4:])
        row = pixels[250 * width:251 * width]  # between the letters
        centre = 20 + 337 // 2  # of the tile
        self.assertGreater(palette[3 * row[centre - 60]], 250)
        self.assertLess(palette[3 * row[centre + 60]], 5)

    def test_maximum_projection_shows_bone(self):
        run = self.run_demo('--output', self.output, '--ct', self.file('head.inv3', volumes.inv3()))
        self.assertEqual((run.returncode, run.stderr), (0, ''))
        with open(os.path.join(self.output, 'skull-maximum.png'), 'rb') as picture:
            rows = volumes.greys(picture.read())
        # From the front: a box of 1200 HU, of 400 to 2400, in air.
        tile = rows[Layout.TOP + 170]
        self.assertEqual(tile[20 + 25], 0)
        self.assertGreater(tile[20 + 200], 95)  # the kernel overshoots

