// What makes a picture readable: directions, a scale, captions, a title.
#pragma once

#include <string>
#include <vector>

#include "Picture.h"
#include "View.h"

namespace reslice {

struct Tile {
    Picture picture;
    std::string caption;
};

/// False if letters and a scale would cover the tile; they are then left out.
bool hasRoom(const Picture& picture);

/// Puts the letters of the patient's directions (R, L, A, P, S, I) on the four edges.
void addDirections(Picture& picture, const Directions& directions);

/// Puts a bar of a round length at the lower right.
void addScale(Picture& picture, double pixelEdge);

/// Both of them; the letters only if the volume says how it is oriented.
void furnish(Picture& picture, const Volume& volume, const Directions& directions,
             double pixelEdge);

/// Tiles side by side, each below its caption, under a title and a line that says more.
Picture composeSheet(const std::string& title, const std::string& subtitle,
                     const std::vector<Tile>& tiles);

/// "181 × 217 × 181 voxels of 1 × 1 × 1 mm"
std::string describe(const Volume& volume);

}  // namespace reslice
