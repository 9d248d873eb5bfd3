#pragma once

// Primary device units: the lines, transformers, generators, exciters and channel groups that a
// recording watches, tying channel indexes to their roles and carrying the plant's data. They
// live in the private sections of the extension file; the analysis forms find their inputs
// through them.

#include "cmtdtypes.h"
#include "infsection.h"

#include <QByteArray>

#include <array>
#include <cstdint>
#include <vector>

class CCmtd99File;
class CTextOutput;

// Phase A, B, C and neutral channel indexes (0: none).
using ChannelSet = std::array<int16_t, 4>;

class CmtdInfTrwk_Unit
{
public:
    enum Kind : int16_t
    {
        KindLine = 1,
        KindTransformer = 2,
        KindPower = 3,
        KindExciter = 4,
        KindGroup = 5
    };
    // Bits of `flags` common to every kind.
    enum BaseBit : uint32_t
    {
        HasDevId = 1u << 0,
        HasName = 1u << 1,
        HasSysId = 1u << 2,
        HasObjectType = 1u << 3
    };

    explicit CmtdInfTrwk_Unit(int16_t kind = KindGroup) : kind(kind) {}
    virtual ~CmtdInfTrwk_Unit() = default;
    virtual bool UsesAnalogChannel(uint16_t index) const;
    virtual bool UsesStatusChannel(uint16_t index) const;

    uint32_t flags = 0;
    int16_t kind = KindGroup;
    int32_t devId = -1;
    QByteArray name;
    QByteArray sysId;
    QByteArray objectType;
    std::vector<uint16_t> otherAnalog;
    std::vector<uint16_t> statusChannels;
    InfKeyValueList otherKeys;
};

class CmtdInfTrwk_UnitLine : public CmtdInfTrwk_Unit
{
public:
    enum Bit : uint32_t
    {
        HasLength = 1u << 4,
        HasR1 = 1u << 5,
        HasX1 = 1u << 6,
        HasR0 = 1u << 7,
        HasX0 = 1u << 8,
        HasC1 = 1u << 9,
        HasG1 = 1u << 10,
        HasC0 = 1u << 11,
        HasG0 = 1u << 12,
        HasMutualR = 1u << 13,
        HasMutualX = 1u << 14,
        HasReactor = 1u << 15,
        HasTaChns = 1u << 16,
        HasTaChns2 = 1u << 17,
        HasTvChns = 1u << 18,
        HasOtherAnalog = 1u << 19,
        HasStatusChannels = 1u << 20
    };
    static constexpr int kTvSets = 8;

    CmtdInfTrwk_UnitLine() : CmtdInfTrwk_Unit(KindLine) {}
    bool UsesAnalogChannel(uint16_t index) const override;

    float length = 0.0f;
    float r1 = 0.0f, x1 = 0.0f, r0 = 0.0f, x0 = 0.0f;
    float c1 = 0.0f, g1 = 0.0f, c0 = 0.0f, g0 = 0.0f;
    float mutualR = 0.0f, mutualX = 0.0f;
    float reactor = 0.0f;
    ChannelSet taChns{};
    int16_t taPolarity = 1;
    ChannelSet taChns2{};
    int16_t taPolarity2 = 1;
    int16_t tvCount = 0;
    std::array<ChannelSet, kTvSets> tvChns{};
};

// One winding side of a transformer.
struct TrmSide
{
    enum Bit : uint32_t
    {
        HasMode = 1u << 0,
        HasVoltage = 1u << 1,
        HasBranch = 1u << 2,
        HasTv = 1u << 3,
        HasTaBk = 1u << 5,
        HasZs = 1u << 6,
        HasZsGap = 1u << 7,
        HasStatus = 1u << 8
    };
    uint32_t flags = 0;
    QByteArray windingText;
    int16_t windingMode = 100;
    float ratedKv = 0.0f;
    int16_t branchNum = 0;
};

class CmtdInfTrwk_UnitTrm : public CmtdInfTrwk_Unit
{
public:
    enum Bit : uint32_t
    {
        HasCapacity = 1u << 4,
        HasTaSelfComp = 1u << 5,
        HasWindingNum = 1u << 6,
        HasTaId1 = 1u << 7,    // to bit 13 for "TA_Id_#7"
        HasTaIdcw1 = 1u << 14, // to bit 18 for "TA_Idcw_#5"
        HasOtherAnalog = 1u << 19,
        HasZStatus = 1u << 20,
        HasStatusChannels = 1u << 21
    };
    static constexpr int kTaIdSets = 7;
    static constexpr int kTaIdcwSets = 5;

    CmtdInfTrwk_UnitTrm() : CmtdInfTrwk_Unit(KindTransformer) {}
    bool UsesAnalogChannel(uint16_t index) const override;
    bool UsesStatusChannel(uint16_t index) const override;

    float capacity = 0.0f;
    QByteArray taSelfComp;
    int16_t windingNum = 0;
    TrmSide sideH, sideM, sideL;
    std::array<ChannelSet, kTaIdSets> taId{};
    std::array<ChannelSet, kTaIdcwSets> taIdcw{};
    ChannelSet hTaBk{};
    ChannelSet hTv{}, mTv{}, lTv{};
    int16_t hTaZs = 0, hTaZsGap = 0, mTaZs = 0, mTaZsGap = 0, lTaZs = 0, lTaZsGap = 0;
    std::vector<uint16_t> hStatus, mStatus, lStatus, zStatus;
};

class CmtdInfTrwk_UnitPwr : public CmtdInfTrwk_Unit
{
public:
    enum Bit : uint32_t
    {
        HasCapacity = 1u << 4,
        HasFreq = 1u << 5,
        HasTrmId = 1u << 6,
        HasFactor = 1u << 7,
        HasV1 = 1u << 8,
        HasBranchNum = 1u << 9,
        HasRotorI = 1u << 10,
        HasRotorV2 = 1u << 11,
        HasUfe = 1u << 12,
        HasX = 1u << 13,
        HasExcitationMode = 1u << 14,
        HasIgtDir = 1u << 15
    };

    CmtdInfTrwk_UnitPwr() : CmtdInfTrwk_Unit(KindPower) {}
    bool UsesAnalogChannel(uint16_t index) const override;
    // Keeps only the stator branches that count (above 0), packed to the front with their
    // current sets; `branchCount` is their number.
    void CompactBranches();

    int32_t trmId = -1;
    QByteArray trmName;
    float freq = 0.0f;
    float capacity = 0.0f;
    float factor = 0.0f;
    float v1 = 0.0f;
    int16_t branchCount = 0;
    std::array<int16_t, 3> branchNum{};
    float rotorI = 0.0f;
    float rotorV2 = 0.0f;
    std::array<float, 2> ufe{};
    float xd = 0.0f, xq = 0.0f, xdTransient = 0.0f, xs = 0.0f;
    int16_t excitationMode = 0;
    int16_t igtDir = 0;
    ChannelSet taChns{};
    std::array<ChannelSet, 3> taZ{};
    ChannelSet taZm{};
    ChannelSet tvChns{};
    std::array<int16_t, 3> ufeChns{};
    int16_t ifeChn = 0;
    std::array<int16_t, 3> unChns{};
    int16_t taIdoChn = 0;
};

class CmtdInfTrwk_UnitExci : public CmtdInfTrwk_Unit
{
public:
    enum Bit : uint32_t
    {
        HasV1 = 1u << 4,
        HasFreq = 1u << 5
    };

    CmtdInfTrwk_UnitExci() : CmtdInfTrwk_Unit(KindExciter) {}
    bool UsesAnalogChannel(uint16_t index) const override;

    int32_t pwrId = -1;
    QByteArray pwrName;
    float freq = 0.0f;
    float v1 = 0.0f;
    ChannelSet taChns{};
    ChannelSet taZ{};
    ChannelSet tvChns{};
};

// A relay's or breaker's act in a recorder's own report: a code, a text, the time "ms.frac",
// and a number.
struct ReportAct
{
    int32_t code = 0;
    QByteArray text;
    int32_t ms = 0;
    int32_t frac = 0;
    int32_t extra = 0;
};

// The recorder's own conclusions from a "REPORT_" section; read, never written.
struct CmtdReport
{
    uint32_t flags = 0;
    QByteArray sectionName;
    QByteArray anaTools;
    int32_t devId = -1;
    QByteArray devName;
    int32_t faultMs = 0;
    int32_t faultFrac = 0;
    RecordTime faultTime;
    float faultPos = -1.0f;
    QByteArray faultPhase, faultPhase2;
    QByteArray jumpPhase0;
    ReportAct relayAct0, breakerAct0, breakerClose;
    QByteArray jumpPhase1;
    ReportAct relayAct1, breakerAct1;
    std::array<float, 2> maxCurrent{}, minCurrent{}, maxVoltage{}, minVoltage{};
    InfKeyValueList otherKeys;
};

// Winding connection code of a transformer side ("Yn11" gives 133); 100 for anything else.
int16_t WindingModeCode(const QByteArray &text);

// Reads one unit section (or report) into the recording: each key guarded by its bit, messages
// into the recording's extension-file messages with the key's line. Gives the reader's result:
// 3 done, 4 out of memory.
int ReadInfUnitSection(CCmtd99File &file, InfUnitSection kind, const QByteArray &head,
                       const InfKeyLines &keys);

// Writes the unit sections whose bit is in `mask` (InfLine, InfTransformer, InfPower,
// InfExcitation, InfChannelsGroup), every unit of a kind in list order, numbered from 1.
void WriteInfUnitSections(CTextOutput &out, const CCmtd99File &file, uint32_t mask);
