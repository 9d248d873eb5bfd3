#pragma once

// The positional ".ext" file that recorders wrote beside the ".cfg" before the sectioned extension
// file existed: the busbars and lines of the bay with their transformer ratings and line data,
// the status kinds of the protection outputs, and the ratings of each analog channel. It is read,
// never written.

#include "cmtdtypes.h"

#include <QByteArray>

#include <cstdint>
#include <map>
#include <vector>

class CCmtd99File;

// One primary and one secondary rating of a transformer (a voltage or current ratio).
struct ExtRatingPair
{
    float primary = 0.0f;
    float secondary = 0.0f;
};

// What a busbar and a line have in common: the phase channels and their transformer ratings.
struct ExtBay
{
    int32_t id = 0;
    QByteArray name;
    int16_t channels[4] = {0, 0, 0, 0};
    ExtRatingPair pairs[4];
    QByteArray primaryUnit;
    QByteArray secondaryUnit;
};

struct ExtBusbar : ExtBay
{
};

// A line of the bay: its busbar, its sequence data and the status channels of its protection.
struct ExtLine : ExtBay
{
    int32_t busId = 0;
    float length = 0.0f;
    float x1 = 0.0f, x0 = 0.0f, r1 = 0.0f, r0 = 0.0f;
    float c1 = 0.0f, c0 = 0.0f;
    float mutualR = 0.0f, mutualX = 0.0f;
    float g1 = 0.0f, g0 = 0.0f;
    int32_t lineType = 0;
    float reactor = 0.0f;
    int16_t statusCount = 0;             // as announced, capped at 160
    std::vector<int16_t> statusChannels; // from the line's status list
};

// The ratings of one analog channel and the kind of quantity it carries.
struct ExtChannel
{
    int16_t index = 0;
    int32_t kind = 0;
    float primaryRating = 0.0f;
    QByteArray primaryUnit;
    float secondaryRating = 0.0f;
    QByteArray secondaryUnit;
    float slopeA = 0.0f;
    float distanceB = 0.0f;
    QByteArray physicalUnit;
};

// The whole file as read. `Load` is tolerant in the way of the ".cfg" reader: a short record
// gives a message and stays zeroed; a bad head or count ends the read with result 5, a missing
// line with result 3. What was read before the end stays and is applied.
class CmtdExtFile
{
public:
    // Reads `path`; `analogCount` is the recording's number of analog channels, the largest
    // channel count the file may announce. Messages go to `messages` with their line.
    int Load(const char *path, int analogCount, LoadMessageList &messages);

    int32_t revision = 1;
    bool sampled = false;
    float localImpedance[4] = {0.0f, 0.0f, 0.0f, 0.0f};  // rm1, rm0, xm1, xm0
    float remoteImpedance[4] = {0.0f, 0.0f, 0.0f, 0.0f}; // rn1, rn0, xn1, xn0
    std::vector<ExtBusbar> busbars;
    std::vector<ExtLine> lines;
    int32_t dualLineCount = 0;
    std::map<int32_t, int32_t> statusKinds; // status channel -> kind
    std::vector<ExtChannel> channels;

private:
    struct Reader;
    int readHead(Reader &in);
    int readBay(Reader &in, int nBus, int nLine, int nT);
    int readStatusLists(Reader &in, int nLine);
    int readChannels(Reader &in, int analogCount);
};

// Fills from `ext` what neither the ".cfg" nor the extension file gave: the channels' ratings
// and kinds, the status kinds, and one line unit per line of a known type.
void ApplyExt(CCmtd99File &file, const CmtdExtFile &ext);

// The number of line units that the ".ext" made for `file` (they stand alone in `lineUnits` then).
int ExtMadeUnitCount(const CCmtd99File &file);
