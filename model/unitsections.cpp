// The readers and writers of the unit sections of the extension file: lines, transformers,
// generators ("power"), exciters, channel groups, and the recorder's own reports.

#include "units.h"

#include "cmtd99file.h"
#include "linereader.h"
#include "safewrite.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kMaxFields = 128;

// The fields of one key line's value, split at commas and trimmed; numbers carry their units
// behind them in the file ("12.5(km)"), and atof/atoi stop there.
struct Fields
{
    explicit Fields(const QByteArray &value) : text(value)
    {
        text.append('\0');
        count = SplitTrimmed(text.data(), items, kMaxFields, ',');
    }
    const char *at(int i) const { return i < count ? items[i] : ""; }
    float number(int i) const { return static_cast<float>(std::atof(at(i))); }
    int whole(int i) const { return std::atoi(at(i)); }

    QByteArray text;
    char *items[kMaxFields] = {};
    int count = 0;
};

bool is(const QByteArray &key, const char *name)
{
    return qstricmp(key.constData(), name) == 0;
}

bool startsWith(const QByteArray &key, const char *prefix)
{
    return qstrnicmp(key.constData(), prefix, uint(std::strlen(prefix))) == 0;
}

// The reading of one section: the unit's bits guard each field (first value wins).
class UnitReader
{
public:
    UnitReader(CCmtd99File &file, CmtdInfTrwk_Unit &unit) : m_file(file), m_unit(unit) {}

    // A float above 0 sets its bit; a field whose bit is set stays.
    void positive(uint32_t bit, float &field, float value)
    {
        if (m_unit.flags & bit)
            return;
        field = value;
        if (value > 0.0f)
            m_unit.flags |= bit;
    }
    // A fixed set takes up to its size of values and sets its bit when one is above 0.
    template <size_t N>
    void set(uint32_t &flags, uint32_t bit, std::array<int16_t, N> &target, const Fields &f)
    {
        if (bit && (flags & bit))
            return;
        bool any = false;
        for (size_t i = 0; i < N && int(i) < f.count; ++i) {
            target[i] = static_cast<int16_t>(f.whole(int(i)));
            any = any || target[i] > 0;
        }
        if (any)
            flags |= bit;
    }
    // A list appends each value above 0.
    void list(uint32_t bit, std::vector<uint16_t> &target, const Fields &f, uint32_t *flags = nullptr)
    {
        uint32_t &bits = flags ? *flags : m_unit.flags;
        if (bit && (bits & bit))
            return;
        for (int i = 0; i < f.count; ++i) {
            const int v = f.whole(i);
            if (v > 0 && v <= UINT16_MAX)
                target.push_back(static_cast<uint16_t>(v));
        }
        if (!target.empty())
            bits |= bit;
    }
    // DEV_ID, SYS_ID, OBJECT_TYPE; false for any other key.
    bool common(const InfKeyLine &line, const Fields &f)
    {
        if (is(line.key, "DEV_ID")) {
            if (f.count < 2) {
                m_file.AddInfMessage(line.line, CmtdMessage("Lossing Parameters (<2)! [%s=%s]",
                                                            line.key.constData(), line.value.constData()));
                return true;
            }
            if (!(m_unit.flags & CmtdInfTrwk_Unit::HasDevId)) {
                m_unit.devId = f.whole(0);
                if (m_unit.devId > 0)
                    m_unit.flags |= CmtdInfTrwk_Unit::HasDevId;
            }
            if (!(m_unit.flags & CmtdInfTrwk_Unit::HasName)) {
                m_unit.name = f.at(1);
                m_unit.flags |= CmtdInfTrwk_Unit::HasName;
            }
            return true;
        }
        if (is(line.key, "SYS_ID"))
            return text(CmtdInfTrwk_Unit::HasSysId, m_unit.sysId, line.value), true;
        if (is(line.key, "OBJECT_TYPE"))
            return text(CmtdInfTrwk_Unit::HasObjectType, m_unit.objectType, line.value), true;
        return false;
    }
    void text(uint32_t bit, QByteArray &field, const QByteArray &value)
    {
        if (m_unit.flags & bit)
            return;
        field = value.trimmed();
        m_unit.flags |= bit;
    }
    void other(const InfKeyLine &line)
    {
        m_unit.otherKeys.append(InfKeyValue{0x80000000u, line.key, line.value});
    }
    void message(int line, const QByteArray &text) { m_file.AddInfMessage(line, text); }

private:
    CCmtd99File &m_file;
    CmtdInfTrwk_Unit &m_unit;
};

void readLineKey(UnitReader &r, CmtdInfTrwk_UnitLine &u, const InfKeyLine &line, const Fields &f)
{
    using L = CmtdInfTrwk_UnitLine;
    if (is(line.key, "LENGTH")) {
        r.positive(L::HasLength, u.length, f.number(0));
    } else if (is(line.key, "RX")) {
        float *fields[] = {&u.r1, &u.x1, &u.r0, &u.x0};
        for (int i = 0; i < 4 && i < f.count; ++i)
            r.positive(L::HasR1 << i, *fields[i], f.number(i));
    } else if (is(line.key, "CG")) {
        float *fields[] = {&u.c1, &u.g1, &u.c0, &u.g0};
        for (int i = 0; i < 4 && i < f.count; ++i)
            r.positive(L::HasC1 << i, *fields[i], f.number(i));
    } else if (is(line.key, "MRX")) {
        if (f.count > 0)
            r.positive(L::HasMutualR, u.mutualR, f.number(0));
        if (f.count > 1)
            r.positive(L::HasMutualX, u.mutualX, f.number(1));
    } else if (is(line.key, "REACTOR")) {
        r.positive(L::HasReactor, u.reactor, qstricmp(f.at(0), "NO") == 0 ? 0.0f : f.number(0));
    } else if (is(line.key, "TA_CHNS") || is(line.key, "TA_CHNS_#2")) {
        const bool second = is(line.key, "TA_CHNS_#2");
        const uint32_t bit = second ? L::HasTaChns2 : L::HasTaChns;
        if (u.flags & bit)
            return;
        r.set(u.flags, bit, second ? u.taChns2 : u.taChns, f);
        if (f.count >= 5)
            (second ? u.taPolarity2 : u.taPolarity) = f.whole(4) < 1 ? -1 : 1;
    } else if (startsWith(line.key, "TV_CHNS")) {
        if (u.tvCount >= L::kTvSets)
            return;
        ChannelSet &set = u.tvChns[size_t(u.tvCount++)];
        uint32_t ignored = 0;
        r.set(ignored, 1u, set, f);
        u.flags |= L::HasTvChns;
    } else if (is(line.key, "OTH_ACHNS")) {
        r.list(L::HasOtherAnalog, u.otherAnalog, f);
    } else if (is(line.key, "STATUS_CHNS")) {
        r.list(L::HasStatusChannels, u.statusChannels, f);
    } else {
        r.other(line);
    }
}

// "H_PARAM", "M_PARAM", "L_PARAM": winding text, voltage, branch count.
void readSideParam(UnitReader &r, TrmSide &side, int sideIndex, const InfKeyLine &line, const Fields &f)
{
    static const char *const kSideNames[] = {"upper-side", "middle-side", "lower-side"};
    if (f.count < 3) {
        r.message(line.line, CmtdMessage("Lossing Parameters (<3)! [%s=%s]", line.key.constData(),
                                         line.value.constData()));
        return;
    }
    if (side.flags & (TrmSide::HasMode | TrmSide::HasVoltage | TrmSide::HasBranch))
        return;
    side.windingText = f.at(0);
    if (side.windingText.isEmpty()) {
        r.message(line.line, CmtdMessage("Invalid [winding mode] of the upper-side of the trans."));
    } else {
        side.windingMode = WindingModeCode(side.windingText);
        side.flags |= TrmSide::HasMode;
    }
    side.ratedKv = f.number(1);
    if (side.ratedKv > 0.0f)
        side.flags |= TrmSide::HasVoltage;
    else
        r.message(line.line, CmtdMessage("Invalid [primary rating vol.] of the %s of the trans! [v=%.3fkV]",
                                         kSideNames[sideIndex], double(side.ratedKv)));
    side.branchNum = static_cast<int16_t>(f.whole(2));
    const int most = sideIndex == 2 ? 3 : 2;
    if (side.branchNum >= 0 && side.branchNum <= most)
        side.flags |= TrmSide::HasBranch;
    else
        r.message(line.line, CmtdMessage("Invalid [Branch nmu.] of the %s of the trans. [Branch=%d]",
                                         kSideNames[sideIndex], int(side.branchNum)));
}

// "TA_Id_#n" and "TA_Idcw_#n": the number in the key selects the set.
void readNumberedSet(UnitReader &r, CmtdInfTrwk_UnitTrm &u, const InfKeyLine &line, const Fields &f, bool cw)
{
    const int sets = cw ? CmtdInfTrwk_UnitTrm::kTaIdcwSets : CmtdInfTrwk_UnitTrm::kTaIdSets;
    const int hash = line.key.indexOf('#');
    const int n = hash >= 0 ? std::atoi(line.key.constData() + hash + 1) : 0;
    if (n < 1 || n > sets) {
        r.message(line.line, CmtdMessage("Index error(<1 or >%d)! [%s=%s]", sets, line.key.constData(),
                                         line.value.constData()));
        return;
    }
    const uint32_t bit = (cw ? CmtdInfTrwk_UnitTrm::HasTaIdcw1 : CmtdInfTrwk_UnitTrm::HasTaId1) << (n - 1);
    r.set(u.flags, bit, cw ? u.taIdcw[size_t(n - 1)] : u.taId[size_t(n - 1)], f);
}

void readSingle(uint32_t &flags, uint32_t bit, int16_t &field, const Fields &f)
{
    if (flags & bit)
        return;
    field = static_cast<int16_t>(f.whole(0));
    if (field > 0)
        flags |= bit;
}

void readTransformerKey(UnitReader &r, CmtdInfTrwk_UnitTrm &u, const InfKeyLine &line, const Fields &f)
{
    using T = CmtdInfTrwk_UnitTrm;
    TrmSide *sides[] = {&u.sideH, &u.sideM, &u.sideL};
    ChannelSet *tvs[] = {&u.hTv, &u.mTv, &u.lTv};
    int16_t *zs[] = {&u.hTaZs, &u.mTaZs, &u.lTaZs};
    int16_t *gaps[] = {&u.hTaZsGap, &u.mTaZsGap, &u.lTaZsGap};
    std::vector<uint16_t> *statuses[] = {&u.hStatus, &u.mStatus, &u.lStatus};
    static const char *const kLetters[] = {"H_", "M_", "L_"};
    if (is(line.key, "CAPACITY")) {
        r.positive(T::HasCapacity, u.capacity, f.number(0));
    } else if (is(line.key, "TA_SELF_COMP")) {
        r.text(T::HasTaSelfComp, u.taSelfComp, line.value);
    } else if (is(line.key, "WINDING_NUM")) {
        if (u.flags & T::HasWindingNum)
            return;
        u.windingNum = static_cast<int16_t>(f.whole(0));
        if (u.windingNum >= 1 && u.windingNum <= 3)
            u.flags |= T::HasWindingNum;
        else
            r.message(line.line,
                      CmtdMessage("Invalid winding num. of the trans.(WindingNum=%d)!", int(u.windingNum)));
    } else if (startsWith(line.key, "TA_Idcw_#")) {
        readNumberedSet(r, u, line, f, true);
    } else if (startsWith(line.key, "TA_Id_#")) {
        readNumberedSet(r, u, line, f, false);
    } else if (is(line.key, "H_TA_BK")) {
        r.set(u.sideH.flags, TrmSide::HasTaBk, u.hTaBk, f);
    } else if (is(line.key, "Z_STATUS_CHNS")) {
        r.list(T::HasZStatus, u.zStatus, f);
    } else if (is(line.key, "OTH_STATUS_CHNS")) {
        r.list(T::HasStatusChannels, u.statusChannels, f);
    } else if (is(line.key, "OTH_ACHNS")) {
        r.list(T::HasOtherAnalog, u.otherAnalog, f);
    } else {
        for (int s = 0; s < 3; ++s) {
            const QByteArray prefix = kLetters[s];
            const QByteArray rest = startsWith(line.key, prefix.constData()) ? line.key.mid(2) : QByteArray();
            if (is(rest, "PARAM"))
                return readSideParam(r, *sides[s], s, line, f);
            if (is(rest, "TV_CHNS"))
                return r.set(sides[s]->flags, TrmSide::HasTv, *tvs[s], f);
            if (is(rest, "TA_ZS"))
                return readSingle(sides[s]->flags, TrmSide::HasZs, *zs[s], f);
            if (is(rest, "TA_ZS_GAP"))
                return readSingle(sides[s]->flags, TrmSide::HasZsGap, *gaps[s], f);
            if (is(rest, "STATUS_CHNS"))
                return r.list(TrmSide::HasStatus, *statuses[s], f, &sides[s]->flags);
        }
        r.other(line);
    }
}

template <size_t N> void takeAll(std::array<int16_t, N> &target, const Fields &f)
{
    for (size_t i = 0; i < N && int(i) < f.count; ++i)
        target[i] = static_cast<int16_t>(f.whole(int(i)));
}

void readPowerNumbers(UnitReader &r, CmtdInfTrwk_UnitPwr &u, const InfKeyLine &line, const Fields &f,
                      bool &known)
{
    using P = CmtdInfTrwk_UnitPwr;
    known = true;
    if (is(line.key, "CAPACITY")) {
        r.positive(P::HasCapacity, u.capacity, f.number(0));
    } else if (is(line.key, "FREQ")) {
        r.positive(P::HasFreq, u.freq, f.number(0));
    } else if (is(line.key, "TRM_ID")) {
        if (u.flags & P::HasTrmId)
            return;
        u.trmId = f.whole(0);
        u.trmName = f.at(1);
        if (u.trmId > 0)
            u.flags |= P::HasTrmId;
    } else if (is(line.key, "FACTOR")) {
        if (!(u.flags & P::HasFactor)) {
            u.factor = f.number(0);
            u.flags |= P::HasFactor;
        }
    } else if (is(line.key, "V1")) {
        r.positive(P::HasV1, u.v1, f.number(0));
    } else if (is(line.key, "BRANCH_NUM")) {
        if (u.flags & P::HasBranchNum)
            return;
        takeAll(u.branchNum, f);
        if (std::any_of(u.branchNum.begin(), u.branchNum.end(), [](int16_t v) { return v > 0; }))
            u.flags |= P::HasBranchNum;
    } else if (is(line.key, "Rotor_I") || is(line.key, "Rotor_V2")) {
        const bool current = is(line.key, "Rotor_I");
        const uint32_t bit = current ? P::HasRotorI : P::HasRotorV2;
        if (!(u.flags & bit)) {
            (current ? u.rotorI : u.rotorV2) = f.number(0);
            u.flags |= bit;
        }
    } else if (is(line.key, "Ufe")) {
        if (!(u.flags & P::HasUfe)) {
            u.ufe = {f.number(0), f.number(1)};
            u.flags |= P::HasUfe;
        }
    } else if (is(line.key, "X")) {
        if (!(u.flags & P::HasX)) {
            u.xd = f.number(0), u.xq = f.number(1), u.xdTransient = f.number(2), u.xs = f.number(3);
            u.flags |= P::HasX;
        }
    } else if (is(line.key, "EXCITATION_MODE")) {
        if (u.flags & P::HasExcitationMode)
            return;
        const int mode = f.whole(0);
        u.excitationMode = static_cast<int16_t>(mode >= 0 && mode <= 2 ? mode : 0);
        if (mode >= 0 && mode <= 2)
            u.flags |= P::HasExcitationMode;
    } else if (is(line.key, "IGT_DIR")) {
        if (!(u.flags & P::HasIgtDir)) {
            u.igtDir = static_cast<int16_t>(f.whole(0));
            u.flags |= P::HasIgtDir;
        }
    } else {
        known = false;
    }
}

void readPowerKey(UnitReader &r, CmtdInfTrwk_UnitPwr &u, const InfKeyLine &line, const Fields &f)
{
    bool known = false;
    readPowerNumbers(r, u, line, f, known);
    if (known)
        return;
    if (is(line.key, "TA_CHNS")) {
        takeAll(u.taChns, f);
    } else if (is(line.key, "TA_Z1_CHNS") || is(line.key, "TA_Z2_CHNS") || is(line.key, "TA_Z3_CHNS")) {
        takeAll(u.taZ[size_t(line.key.at(4) - '1')], f);
    } else if (is(line.key, "TA_ZM_CHNS")) {
        takeAll(u.taZm, f);
    } else if (is(line.key, "TV_CHNS")) {
        takeAll(u.tvChns, f);
    } else if (is(line.key, "Ufe_CHNS")) {
        takeAll(u.ufeChns, f);
    } else if (is(line.key, "Ife_CHN")) {
        u.ifeChn = static_cast<int16_t>(f.whole(0));
    } else if (is(line.key, "UN_CHNS")) {
        takeAll(u.unChns, f);
    } else if (is(line.key, "TA_Ido_CHN")) {
        u.taIdoChn = static_cast<int16_t>(f.whole(0));
    } else if (is(line.key, "OTH_ACHNS")) {
        r.list(0, u.otherAnalog, f);
    } else if (is(line.key, "STATUS_CHNS")) {
        r.list(0, u.statusChannels, f);
    } else {
        r.other(line);
    }
}

void readExciterKey(UnitReader &r, CmtdInfTrwk_UnitExci &u, const InfKeyLine &line, const Fields &f)
{
    using E = CmtdInfTrwk_UnitExci;
    if (is(line.key, "PWR_ID")) {
        u.pwrId = f.whole(0);
        u.pwrName = f.at(1);
    } else if (is(line.key, "FREQ")) {
        r.positive(E::HasFreq, u.freq, f.number(0));
    } else if (is(line.key, "V1")) {
        r.positive(E::HasV1, u.v1, f.number(0));
    } else if (is(line.key, "TA_CHNS")) {
        takeAll(u.taChns, f);
    } else if (is(line.key, "TA_Z_CHNS")) {
        takeAll(u.taZ, f);
    } else if (is(line.key, "TV_CHNS")) {
        takeAll(u.tvChns, f);
    } else if (is(line.key, "OTH_ACHNS")) {
        r.list(0, u.otherAnalog, f);
    } else if (is(line.key, "STATUS_CHNS")) {
        r.list(0, u.statusChannels, f);
    } else {
        r.other(line);
    }
}

void readGroupKey(UnitReader &r, CmtdInfTrwk_Unit &u, const InfKeyLine &line, const Fields &f)
{
    if (is(line.key, "OTH_ACHNS"))
        r.list(0, u.otherAnalog, f);
    else if (is(line.key, "STATUS_CHNS"))
        r.list(0, u.statusChannels, f);
    else
        r.other(line);
}

// A code, a text, "ms.frac", a number.
ReportAct readAct(const Fields &f)
{
    ReportAct act;
    act.code = f.whole(0);
    act.text = f.at(1);
    act.ms = f.whole(2);
    if (const char *dot = std::strchr(f.at(2), '.'))
        act.frac = std::atoi(dot + 1);
    act.extra = f.whole(3);
    return act;
}

void readReportKey(CmtdReport &report, const InfKeyLine &line, const Fields &f)
{
    auto pair = [&f](std::array<float, 2> &target) { target = {f.number(0), f.number(1)}; };
    if (is(line.key, "ANA_TOOLS")) {
        report.anaTools = line.value.trimmed();
    } else if (is(line.key, "DEV_ID")) {
        report.devId = f.whole(0);
        report.devName = f.at(1);
    } else if (is(line.key, "FAULT_TIME")) {
        // "ms.frac,date": the stamp behind the first comma.
        report.faultMs = std::atoi(line.value.constData());
        const int dot = line.value.indexOf('.');
        const int comma = line.value.indexOf(',');
        report.faultFrac =
            dot >= 0 && (comma < 0 || dot < comma) ? std::atoi(line.value.constData() + dot + 1) : 0;
        if (comma >= 0)
            ParseTime1999(line.value.mid(comma + 1).trimmed().constData(), report.faultTime);
    } else if (is(line.key, "FAULT_POS")) {
        report.faultPos = f.number(0);
    } else if (is(line.key, "FAULT_PHASE")) {
        report.faultPhase = f.at(0);
        report.faultPhase2 = f.at(1);
    } else if (is(line.key, "JUMP_PHASE0") || is(line.key, "JUMP_PHASE1")) {
        (is(line.key, "JUMP_PHASE0") ? report.jumpPhase0 : report.jumpPhase1) = line.value.trimmed();
    } else if (is(line.key, "RELAY_ACT0")) {
        report.relayAct0 = readAct(f);
    } else if (is(line.key, "BREAKER_ACT0")) {
        report.breakerAct0 = readAct(f);
    } else if (is(line.key, "BREAKER_CLOSE")) {
        report.breakerClose = readAct(f);
    } else if (is(line.key, "RELAY_ACT1")) {
        report.relayAct1 = readAct(f);
    } else if (is(line.key, "BREAKER_ACT1")) {
        report.breakerAct1 = readAct(f);
    } else if (is(line.key, "MAX_CURRENT")) {
        pair(report.maxCurrent);
    } else if (is(line.key, "MIN_CURRENT")) {
        pair(report.minCurrent);
    } else if (is(line.key, "MAX_VOLTAGE")) {
        pair(report.maxVoltage);
    } else if (is(line.key, "MIN_VOLTAGE")) {
        pair(report.minVoltage);
    } else {
        report.otherKeys.append(InfKeyValue{0x80000000u, line.key, line.value});
    }
}

template <typename Unit, typename ReadKey>
int readUnit(CCmtd99File &file, std::vector<std::unique_ptr<Unit>> &units, uint32_t sectionBit,
             const InfKeyLines &keys, ReadKey readKey)
{
    std::unique_ptr<Unit> unit(new (std::nothrow) Unit);
    if (!unit)
        return 4;
    UnitReader reader(file, *unit);
    for (const InfKeyLine &line : keys) {
        const Fields f(line.value);
        if (!reader.common(line, f))
            readKey(reader, *unit, line, f);
    }
    file.maxDeviceId = std::max(file.maxDeviceId, unit->devId);
    if constexpr (std::is_same_v<Unit, CmtdInfTrwk_UnitPwr>)
        unit->CompactBranches();
    // A unit of a name already known, of any kind, is dropped without a word.
    if (file.FindUnitByName(unit->name))
        return 3;
    units.push_back(std::move(unit));
    file.infSectionsSeen |= sectionBit;
    return 3;
}

} // namespace

int ReadInfUnitSection(CCmtd99File &file, InfUnitSection kind, const QByteArray &head,
                       const InfKeyLines &keys)
{
    switch (kind) {
    case InfUnitSection::Line:
        return readUnit(file, file.lineUnits, InfLine, keys, readLineKey);
    case InfUnitSection::Transformer:
        return readUnit(file, file.transformerUnits, InfTransformer, keys, readTransformerKey);
    case InfUnitSection::Power:
        return readUnit(file, file.powerUnits, InfPower, keys, readPowerKey);
    case InfUnitSection::Excitation:
        return readUnit(file, file.exciterUnits, InfExcitation, keys, readExciterKey);
    case InfUnitSection::ChannelsGroup:
        return readUnit(file, file.groupUnits, InfChannelsGroup, keys, readGroupKey);
    case InfUnitSection::Report: {
        CmtdReport report;
        report.sectionName = head;
        // Taken as they stand, without bits: the last occurrence wins.
        for (const InfKeyLine &line : keys)
            readReportKey(report, line, Fields(line.value));
        file.reportRecords.push_back(std::move(report));
        file.infSectionsSeen |= InfReport;
        return 3;
    }
    }
    return 3;
}
