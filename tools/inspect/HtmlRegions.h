#pragma once

#include <string>

#include "inspect/Layout.h"

/// @file
/// What the drawing of a file calls its regions, and how it paints them.

struct RegionStyle {
    Region region;
    const char* cssClass; ///< also names the variable with its colour
    const char* name;
};

const RegionStyle& styleOf(Region region);

/// "picture 97.1 %, sound 2.4 %".
std::string shares(const LayoutBlock& block);

/// A mixed block is painted in stripes as thick as the shares, but none too thin to be seen.
std::string stripes(const LayoutBlock& block);
