#pragma once

// GLSL texts of the filter pipeline. Every fragment program is one of the two
// headers followed by a filter body; the texts are byte-exact (some lines end
// in a blank) because compiled programs are cached under the filter's name and
// a changed text must produce the same program the cache was made from.
namespace orvan::filter_shaders {

extern const char kVertexShader[];
extern const char kFragmentHeader2D[];
extern const char kFragmentHeaderOES[];
extern const char kBaseFragment[];
extern const char kTableFragment[];
extern const char kDistortedFragment[];
extern const char kExtrusionFragment[];
extern const char kMirrorFragment[];
extern const char kTemperatureFragment[];
extern const char kTimetunnelFragment[];
extern const char kXrayFragment[];

}  // namespace orvan::filter_shaders
