// Palettes, from a shared scheme and the key colours of each.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"
#include "TreeCompiler/CXmlSource.h"

#include <filesystem>
#include <vector>

namespace qel::tools {

// A palette names its scheme, a file beside it, and gives key colours, in the form of CColourBook.h:
//
//   <palette scheme="scheme.xml"><key name="accent" colour="#ffb24a"/>...</palette>
//
// The scheme makes all colours of the palette, in the order in which they stand:
//
//   <palette-scheme>
//     <key name="button" colour="mix(#3d4249, accent, 0.05)"/>
//     <ramp name="ink"><stop value="0" colour="black"/><stop value="255" colour="self"/></ramp>
//     <colours names="Button ButtonAB" states="all" ramp="surface" active-ramp="lit" opacity="0.75"
//              colour="button" hover="mix(self, white, 0.1)" active="accent"/>
//     <pulse name="Alarm" frames="32" ramp="lit" from="alarm" to="mix(alarm, white, 0.4)"/>
//   </palette-scheme>
//
// A key that the palette gives holds against that of the scheme. A ramp's stops, from 0 to 255, tell what an
// image's value becomes where the colour is `self`, linear in between. <colours> makes each name in the
// states "all" (name, name_Hover, name_Active, name_ActiveHover), "hover" (the first two) or "none" (the
// first). What is not given for a state is that of the plain colour; `self` in `hover` is the plain colour,
// in the active hovered state the active one, to which `hover` applies likewise if there is no
// `active-hover`. <pulse> makes a frame table and its colours "name|0" to "name|frames - 1" in equal steps: a
// view swings to and fro between the ends with a sine, so that evenly spaced frames give a smooth pulse. See
// GraphicsSource.h for the form.
CPaletteFile compilePalette(CXmlSource& source, std::vector<std::filesystem::path>& files);

} // namespace qel::tools
