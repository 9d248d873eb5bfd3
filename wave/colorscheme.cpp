#include "colorscheme.h"

namespace {

const uint32_t kSchemes[3][kSchemeColours] = {
    {0xff000000, 0xff404040, 0xffe1e1e1, 0xff202020, 0xff5c5c5c, 0xfffafafa, 0xffff00ff, 0xffff8000,
     0xff0000ff, 0xff00ff00},
    {0xffffffff, 0xfffafafa, 0xff808080, 0xffebebeb, 0xffc8c8c8, 0xff000000, 0xffff00ff, 0xffff8000,
     0xff0000ff, 0xff0000ff},
    {0xfff0f0f0, 0xffe1e1e1, 0xff808080, 0xffc8c8c8, 0xffc0c0c0, 0xff000000, 0xffff00ff, 0xffff8000,
     0xff0000ff, 0xff0000ff},
};

} // namespace

const uint32_t *SchemeRow(int scheme)
{
    // A negative scheme (an options file may hold one) is read as the default.
    return kSchemes[scheme >= 0 && scheme < 3 ? scheme : 1];
}

uint32_t SchemeColour(int scheme, int entry)
{
    return entry >= 0 && entry < kSchemeColours ? SchemeRow(scheme)[entry] : 0xff000000;
}
