#pragma once

#include <QByteArray>

#include <cstdint>

class CChnMapAnalog;
class CChnMapBase;
class CChnMapStatus;
struct ChnCursorValue;

// The display texts of channel stores, driven by the frame's display flags: values with
// units and prefixes, primary or secondary, effective values and phase angles.
enum DisplayFlag : uint32_t
{
    DisplayDots = 0x1,
    DisplayVertExtend = 0x2,
    DisplayT0 = 0x10000,
    DisplayT0Custom = 0x20000,
    DisplayHideStill = 0x40000,
    DisplayPrimary = 0x100000,
    DisplayBaseEffective = 0x200000,
    DisplayRealEffective = 0x400000,
    DisplayAngle = 0x800000,
    DisplayFrequency = 0x1000000,
    DisplayNameAhead = 0x2000000,
    DisplayNoIndex = 0x4000000
};

// A number with the channel's unit: DC channels in mV/mA choose their prefix by size; with the
// primary flag the value is turned through the transformer ratio.
QByteArray FormatChannelNumber(const CChnMapAnalog &chn, double value, uint32_t flags);
// The value of a channel at a sample, as the name column shows it.
QByteArray ValueText(const CChnMapAnalog &chn, const ChnCursorValue &info, int index, uint32_t flags);
// "(Ang)%.3f(Deg)" of a phasor's angle.
QByteArray AngleText(double re, double im);
// The whole row text of an analog channel with its values at the two cursors.
QByteArray RowText(const CChnMapAnalog &chn, const ChnCursorValue &t1, int index1, const ChnCursorValue &t2,
                   int index2, uint32_t flags, const char *label1 = "T1", const char *label2 = "T2");
QByteArray StatusRowText(const CChnMapStatus &chn, int index1, int index2, uint32_t flags,
                         const char *label1 = "T1", const char *label2 = "T2");
// The row text without cursors: the channel's extent.
QByteArray ExtentText(const CChnMapAnalog &chn, uint32_t flags);
QByteArray DisplayName(const CChnMapBase &chn, uint32_t flags);
