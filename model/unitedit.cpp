#include "unitedit.h"

#include "chnmap.h"
#include "cmtd99file.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("UnitEdit", text);
}

// Role labels, kept as literals so that the translation table finds them.
const char *const kTvLabels[] = {
    QT_TRANSLATE_NOOP("UnitEdit", "TV #1"), QT_TRANSLATE_NOOP("UnitEdit", "TV #2"),
    QT_TRANSLATE_NOOP("UnitEdit", "TV #3"), QT_TRANSLATE_NOOP("UnitEdit", "TV #4"),
    QT_TRANSLATE_NOOP("UnitEdit", "TV #5"), QT_TRANSLATE_NOOP("UnitEdit", "TV #6"),
    QT_TRANSLATE_NOOP("UnitEdit", "TV #7"), QT_TRANSLATE_NOOP("UnitEdit", "TV #8")};
const char *const kTaIdLabels[] = {
    QT_TRANSLATE_NOOP("UnitEdit", "TA Id #1"), QT_TRANSLATE_NOOP("UnitEdit", "TA Id #2"),
    QT_TRANSLATE_NOOP("UnitEdit", "TA Id #3"), QT_TRANSLATE_NOOP("UnitEdit", "TA Id #4"),
    QT_TRANSLATE_NOOP("UnitEdit", "TA Id #5"), QT_TRANSLATE_NOOP("UnitEdit", "TA Id #6"),
    QT_TRANSLATE_NOOP("UnitEdit", "TA Id #7")};
const char *const kTaIdcwLabels[] = {
    QT_TRANSLATE_NOOP("UnitEdit", "TA Idcw #1"), QT_TRANSLATE_NOOP("UnitEdit", "TA Idcw #2"),
    QT_TRANSLATE_NOOP("UnitEdit", "TA Idcw #3"), QT_TRANSLATE_NOOP("UnitEdit", "TA Idcw #4"),
    QT_TRANSLATE_NOOP("UnitEdit", "TA Idcw #5")};
const char *const kTaZLabels[] = {QT_TRANSLATE_NOOP("UnitEdit", "TA Z1"),
                                  QT_TRANSLATE_NOOP("UnitEdit", "TA Z2"),
                                  QT_TRANSLATE_NOOP("UnitEdit", "TA Z3")};

ChannelRole phasedSet(const char *label, RoleSignal signal, ChannelSet &set)
{
    return ChannelRole{label, signal, set.data(), 4, true};
}

ChannelRole places(const char *label, RoleSignal signal, int16_t *first, int count)
{
    return ChannelRole{label, signal, first, count, false};
}

void lineRoles(CmtdInfTrwk_UnitLine &u, std::vector<ChannelRole> &roles)
{
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "TA"), RoleSignal::Current, u.taChns));
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "TA #2"), RoleSignal::Current, u.taChns2));
    for (int i = 0; i < CmtdInfTrwk_UnitLine::kTvSets; ++i)
        roles.push_back(phasedSet(kTvLabels[i], RoleSignal::Voltage, u.tvChns[size_t(i)]));
}

void transformerRoles(CmtdInfTrwk_UnitTrm &u, std::vector<ChannelRole> &roles)
{
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "H TV"), RoleSignal::Voltage, u.hTv));
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "M TV"), RoleSignal::Voltage, u.mTv));
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "L TV"), RoleSignal::Voltage, u.lTv));
    for (int i = 0; i < CmtdInfTrwk_UnitTrm::kTaIdSets; ++i)
        roles.push_back(phasedSet(kTaIdLabels[i], RoleSignal::Current, u.taId[size_t(i)]));
    for (int i = 0; i < CmtdInfTrwk_UnitTrm::kTaIdcwSets; ++i)
        roles.push_back(phasedSet(kTaIdcwLabels[i], RoleSignal::Current, u.taIdcw[size_t(i)]));
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "H TA BK"), RoleSignal::Current, u.hTaBk));
    roles.push_back(places(QT_TRANSLATE_NOOP("UnitEdit", "H TA ZS"), RoleSignal::Current, &u.hTaZs, 1));
    roles.push_back(
        places(QT_TRANSLATE_NOOP("UnitEdit", "H TA ZS GAP"), RoleSignal::Current, &u.hTaZsGap, 1));
    roles.push_back(places(QT_TRANSLATE_NOOP("UnitEdit", "M TA ZS"), RoleSignal::Current, &u.mTaZs, 1));
    roles.push_back(
        places(QT_TRANSLATE_NOOP("UnitEdit", "M TA ZS GAP"), RoleSignal::Current, &u.mTaZsGap, 1));
    roles.push_back(places(QT_TRANSLATE_NOOP("UnitEdit", "L TA ZS"), RoleSignal::Current, &u.lTaZs, 1));
    roles.push_back(
        places(QT_TRANSLATE_NOOP("UnitEdit", "L TA ZS GAP"), RoleSignal::Current, &u.lTaZsGap, 1));
}

void powerRoles(CmtdInfTrwk_UnitPwr &u, std::vector<ChannelRole> &roles)
{
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "TV"), RoleSignal::Voltage, u.tvChns));
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "TA"), RoleSignal::Current, u.taChns));
    for (size_t i = 0; i < u.taZ.size(); ++i)
        roles.push_back(phasedSet(kTaZLabels[i], RoleSignal::Current, u.taZ[i]));
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "TA ZM"), RoleSignal::Current, u.taZm));
    roles.push_back(places(QT_TRANSLATE_NOOP("UnitEdit", "Ufe"), RoleSignal::Any, u.ufeChns.data(), 3));
    roles.push_back(places(QT_TRANSLATE_NOOP("UnitEdit", "Ife"), RoleSignal::Any, &u.ifeChn, 1));
    roles.push_back(places(QT_TRANSLATE_NOOP("UnitEdit", "UN"), RoleSignal::Any, u.unChns.data(), 3));
    roles.push_back(places(QT_TRANSLATE_NOOP("UnitEdit", "TA Ido"), RoleSignal::Current, &u.taIdoChn, 1));
}

void exciterRoles(CmtdInfTrwk_UnitExci &u, std::vector<ChannelRole> &roles)
{
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "TV"), RoleSignal::Voltage, u.tvChns));
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "TA"), RoleSignal::Current, u.taChns));
    roles.push_back(phasedSet(QT_TRANSLATE_NOOP("UnitEdit", "TA Z"), RoleSignal::Current, u.taZ));
}

bool hasAny(const int16_t *values, int count)
{
    return std::any_of(values, values + count, [](int16_t v) { return v > 0; });
}

void give(uint32_t &flags, uint32_t bit, bool given)
{
    flags = given ? flags | bit : flags & ~bit;
}

void lineBits(CmtdInfTrwk_UnitLine &u)
{
    using L = CmtdInfTrwk_UnitLine;
    const std::pair<float, uint32_t> numbers[] = {
        {u.length, L::HasLength},   {u.r1, L::HasR1},           {u.x1, L::HasX1},
        {u.r0, L::HasR0},           {u.x0, L::HasX0},           {u.c1, L::HasC1},
        {u.g1, L::HasG1},           {u.c0, L::HasC0},           {u.g0, L::HasG0},
        {u.mutualR, L::HasMutualR}, {u.mutualX, L::HasMutualX}, {u.reactor, L::HasReactor}};
    for (const auto &[value, bit] : numbers)
        give(u.flags, bit, value > 0.0f);
    give(u.flags, L::HasTaChns, hasAny(u.taChns.data(), 4));
    give(u.flags, L::HasTaChns2, hasAny(u.taChns2.data(), 4));
    // Voltage sets count up to the last one that holds a channel.
    u.tvCount = 0;
    for (int i = 0; i < L::kTvSets; ++i) {
        if (hasAny(u.tvChns[size_t(i)].data(), 4))
            u.tvCount = int16_t(i + 1);
    }
    give(u.flags, L::HasTvChns, u.tvCount > 0);
    give(u.flags, L::HasOtherAnalog, !u.otherAnalog.empty());
    give(u.flags, L::HasStatusChannels, !u.statusChannels.empty());
}

void sideBits(TrmSide &side, const ChannelSet &tv, int16_t zs, int16_t zsGap,
              const std::vector<uint16_t> &status)
{
    give(side.flags, TrmSide::HasMode, !side.windingText.isEmpty());
    side.windingMode = WindingModeCode(side.windingText);
    give(side.flags, TrmSide::HasVoltage, side.ratedKv > 0.0f);
    give(side.flags, TrmSide::HasBranch, true);
    give(side.flags, TrmSide::HasTv, hasAny(tv.data(), 4));
    give(side.flags, TrmSide::HasZs, zs > 0);
    give(side.flags, TrmSide::HasZsGap, zsGap > 0);
    give(side.flags, TrmSide::HasStatus, !status.empty());
}

void transformerBits(CmtdInfTrwk_UnitTrm &u)
{
    using T = CmtdInfTrwk_UnitTrm;
    give(u.flags, T::HasCapacity, u.capacity > 0.0f);
    give(u.flags, T::HasTaSelfComp, !u.taSelfComp.isEmpty());
    give(u.flags, T::HasWindingNum, u.windingNum >= 1 && u.windingNum <= 3);
    for (int i = 0; i < T::kTaIdSets; ++i)
        give(u.flags, T::HasTaId1 << i, hasAny(u.taId[size_t(i)].data(), 4));
    for (int i = 0; i < T::kTaIdcwSets; ++i)
        give(u.flags, T::HasTaIdcw1 << i, hasAny(u.taIdcw[size_t(i)].data(), 4));
    give(u.flags, T::HasOtherAnalog, !u.otherAnalog.empty());
    give(u.flags, T::HasZStatus, !u.zStatus.empty());
    give(u.flags, T::HasStatusChannels, !u.statusChannels.empty());
    sideBits(u.sideH, u.hTv, u.hTaZs, u.hTaZsGap, u.hStatus);
    give(u.sideH.flags, TrmSide::HasTaBk, hasAny(u.hTaBk.data(), 4));
    sideBits(u.sideM, u.mTv, u.mTaZs, u.mTaZsGap, u.mStatus);
    sideBits(u.sideL, u.lTv, u.lTaZs, u.lTaZsGap, u.lStatus);
}

void powerBits(CmtdInfTrwk_UnitPwr &u)
{
    using P = CmtdInfTrwk_UnitPwr;
    give(u.flags, P::HasCapacity, u.capacity > 0.0f);
    give(u.flags, P::HasFreq, u.freq > 0.0f);
    give(u.flags, P::HasTrmId, u.trmId > 0);
    give(u.flags, P::HasFactor, u.factor != 0.0f);
    give(u.flags, P::HasV1, u.v1 > 0.0f);
    give(u.flags, P::HasRotorI, u.rotorI != 0.0f);
    give(u.flags, P::HasRotorV2, u.rotorV2 != 0.0f);
    give(u.flags, P::HasUfe, u.ufe[0] != 0.0f || u.ufe[1] != 0.0f);
    give(u.flags, P::HasX, u.xd != 0.0f || u.xq != 0.0f || u.xdTransient != 0.0f || u.xs != 0.0f);
    give(u.flags, P::HasExcitationMode, true);
    give(u.flags, P::HasIgtDir, true);
    u.CompactBranches();
    give(u.flags, P::HasBranchNum, u.branchCount > 0);
}

void exciterBits(CmtdInfTrwk_UnitExci &u)
{
    give(u.flags, CmtdInfTrwk_UnitExci::HasV1, u.v1 > 0.0f);
    give(u.flags, CmtdInfTrwk_UnitExci::HasFreq, u.freq > 0.0f);
}

} // namespace

std::vector<ChannelRole> ChannelRolesOf(CmtdInfTrwk_Unit &unit)
{
    std::vector<ChannelRole> roles;
    switch (unit.kind) {
    case CmtdInfTrwk_Unit::KindLine:
        lineRoles(static_cast<CmtdInfTrwk_UnitLine &>(unit), roles);
        break;
    case CmtdInfTrwk_Unit::KindTransformer:
        transformerRoles(static_cast<CmtdInfTrwk_UnitTrm &>(unit), roles);
        break;
    case CmtdInfTrwk_Unit::KindPower:
        powerRoles(static_cast<CmtdInfTrwk_UnitPwr &>(unit), roles);
        break;
    case CmtdInfTrwk_Unit::KindExciter:
        exciterRoles(static_cast<CmtdInfTrwk_UnitExci &>(unit), roles);
        break;
    default:
        break;
    }
    return roles;
}

bool ChannelFitsRole(const CChnMapAnalog &channel, const ChannelRole &role, int place)
{
    if (role.signal == RoleSignal::Voltage && channel.Class() != ClassACV)
        return false;
    if (role.signal == RoleSignal::Current && channel.Class() != ClassACC)
        return false;
    if (!role.phased || channel.Phase() == PhaseUnknown)
        return true;
    if (place == 3)
        return channel.Phase() == PhaseNeutral || channel.Phase() == PhaseSeq0;
    return channel.Phase() == PhaseA + place;
}

const char *UnitKindText(int kind)
{
    static const char *const kKinds[] = {"",
                                         QT_TRANSLATE_NOOP("UnitKind", "Line"),
                                         QT_TRANSLATE_NOOP("UnitKind", "Transformer"),
                                         QT_TRANSLATE_NOOP("UnitKind", "Generator"),
                                         QT_TRANSLATE_NOOP("UnitKind", "Exciter"),
                                         QT_TRANSLATE_NOOP("UnitKind", "Channel Group")};
    return kind >= 1 && kind <= 5 ? kKinds[kind] : kKinds[0];
}

std::unique_ptr<CmtdInfTrwk_Unit> CloneUnit(const CmtdInfTrwk_Unit &unit)
{
    switch (unit.kind) {
    case CmtdInfTrwk_Unit::KindLine:
        return std::make_unique<CmtdInfTrwk_UnitLine>(static_cast<const CmtdInfTrwk_UnitLine &>(unit));
    case CmtdInfTrwk_Unit::KindTransformer:
        return std::make_unique<CmtdInfTrwk_UnitTrm>(static_cast<const CmtdInfTrwk_UnitTrm &>(unit));
    case CmtdInfTrwk_Unit::KindPower:
        return std::make_unique<CmtdInfTrwk_UnitPwr>(static_cast<const CmtdInfTrwk_UnitPwr &>(unit));
    case CmtdInfTrwk_Unit::KindExciter:
        return std::make_unique<CmtdInfTrwk_UnitExci>(static_cast<const CmtdInfTrwk_UnitExci &>(unit));
    default:
        return std::make_unique<CmtdInfTrwk_Unit>(unit);
    }
}

std::unique_ptr<CmtdInfTrwk_Unit> MakeUnit(int kind)
{
    switch (kind) {
    case CmtdInfTrwk_Unit::KindLine:
        return std::make_unique<CmtdInfTrwk_UnitLine>();
    case CmtdInfTrwk_Unit::KindTransformer: {
        auto unit = std::make_unique<CmtdInfTrwk_UnitTrm>();
        unit->windingNum = 2;
        return unit;
    }
    case CmtdInfTrwk_Unit::KindPower:
        return std::make_unique<CmtdInfTrwk_UnitPwr>();
    case CmtdInfTrwk_Unit::KindExciter:
        return std::make_unique<CmtdInfTrwk_UnitExci>();
    case CmtdInfTrwk_Unit::KindGroup:
        return std::make_unique<CmtdInfTrwk_Unit>(CmtdInfTrwk_Unit::KindGroup);
    default:
        return nullptr;
    }
}

namespace {

void checkChannels(const CCmtd99File &file, CmtdInfTrwk_Unit &unit, QStringList &messages)
{
    for (const ChannelRole &role : ChannelRolesOf(unit)) {
        for (int i = 0; i < role.count; ++i) {
            if (role.places[i] < 0 || (role.places[i] > 0 && !file.FindAnalogChannel(role.places[i])))
                messages << tr("%1: there is no analog channel %2").arg(tr(role.label)).arg(role.places[i]);
        }
    }
    for (uint16_t index : unit.otherAnalog) {
        if (!file.FindAnalogChannel(index))
            messages << tr("There is no analog channel %1").arg(index);
    }
    for (uint16_t index : unit.statusChannels) {
        if (!file.FindStatusChannel(index))
            messages << tr("There is no status channel %1").arg(index);
    }
}

void checkNumbers(const std::vector<std::pair<float, const char *>> &numbers, QStringList &messages)
{
    for (const auto &[value, what] : numbers) {
        if (!std::isfinite(value) || value < 0.0f)
            messages << tr("%1 must be a number of 0 or more").arg(tr(what));
    }
}

void checkLine(const CmtdInfTrwk_UnitLine &u, QStringList &messages)
{
    // A line without its length still groups its channels; fault location asks for it later.
    checkNumbers({{u.length, QT_TRANSLATE_NOOP("UnitEdit", "Length")},
                  {u.r1, QT_TRANSLATE_NOOP("UnitEdit", "R1")},
                  {u.x1, QT_TRANSLATE_NOOP("UnitEdit", "X1")},
                  {u.r0, QT_TRANSLATE_NOOP("UnitEdit", "R0")},
                  {u.x0, QT_TRANSLATE_NOOP("UnitEdit", "X0")},
                  {u.c1, QT_TRANSLATE_NOOP("UnitEdit", "C1")},
                  {u.g1, QT_TRANSLATE_NOOP("UnitEdit", "G1")},
                  {u.c0, QT_TRANSLATE_NOOP("UnitEdit", "C0")},
                  {u.g0, QT_TRANSLATE_NOOP("UnitEdit", "G0")},
                  {u.mutualR, QT_TRANSLATE_NOOP("UnitEdit", "Mutual R")},
                  {u.mutualX, QT_TRANSLATE_NOOP("UnitEdit", "Mutual X")},
                  {u.reactor, QT_TRANSLATE_NOOP("UnitEdit", "Shunt reactor")}},
                 messages);
}

void checkSide(const TrmSide &side, const char *name, int maxBranches, QStringList &messages)
{
    if (side.windingText.isEmpty())
        messages << tr("The winding of the %1 side is missing (Y, Yn11, D11, ...)").arg(tr(name));
    if (!(side.ratedKv > 0.0f) || !std::isfinite(side.ratedKv))
        messages << tr("The rated voltage of the %1 side must be above 0 kV").arg(tr(name));
    if (side.branchNum < 0 || side.branchNum > maxBranches)
        messages << tr("The %1 side has 0 to %2 branches").arg(tr(name)).arg(maxBranches);
}

void checkTransformer(const CmtdInfTrwk_UnitTrm &u, QStringList &messages)
{
    if (u.windingNum < 1 || u.windingNum > 3) {
        messages << tr("A transformer has 1 to 3 windings");
        return;
    }
    checkNumbers({{u.capacity, QT_TRANSLATE_NOOP("UnitEdit", "Capacity")}}, messages);
    checkSide(u.sideH, QT_TRANSLATE_NOOP("UnitEdit", "upper"), 2, messages);
    if (u.windingNum == 3)
        checkSide(u.sideM, QT_TRANSLATE_NOOP("UnitEdit", "middle"), 2, messages);
    if (u.windingNum >= 2)
        checkSide(u.sideL, QT_TRANSLATE_NOOP("UnitEdit", "lower"), 3, messages);
}

void checkPower(const CmtdInfTrwk_UnitPwr &u, QStringList &messages)
{
    checkNumbers({{u.capacity, QT_TRANSLATE_NOOP("UnitEdit", "Capacity")},
                  {u.v1, QT_TRANSLATE_NOOP("UnitEdit", "Rated voltage")},
                  {u.xd, QT_TRANSLATE_NOOP("UnitEdit", "Xd")},
                  {u.xq, QT_TRANSLATE_NOOP("UnitEdit", "Xq")},
                  {u.xdTransient, QT_TRANSLATE_NOOP("UnitEdit", "Xd'")},
                  {u.xs, QT_TRANSLATE_NOOP("UnitEdit", "Xs")}},
                 messages);
    if (u.freq != 0.0f && !(u.freq >= 1.0f && u.freq <= 1000.0f))
        messages << tr("A rated frequency is a number from 1 to 1000 Hz");
    if (!(std::fabs(u.factor) <= 1.0f))
        messages << tr("The power factor lies between -1 and 1");
    for (int16_t branches : u.branchNum) {
        if (branches < 0 || branches > 64)
            messages << tr("A stator branch count lies between 0 and 64");
    }
    if (u.excitationMode < 0 || u.excitationMode > 2)
        messages << tr("Unknown excitation mode");
}

void checkExciter(const CmtdInfTrwk_UnitExci &u, QStringList &messages)
{
    checkNumbers({{u.v1, QT_TRANSLATE_NOOP("UnitEdit", "Rated voltage")}}, messages);
    if (u.freq != 0.0f && !(u.freq >= 1.0f && u.freq <= 1000.0f))
        messages << tr("A rated frequency is a number from 1 to 1000 Hz");
}

} // namespace

QStringList CheckUnit(const CCmtd99File &file, const CmtdInfTrwk_Unit &unit,
                      const CmtdInfTrwk_Unit *replacing)
{
    QStringList messages;
    const QByteArray name = unit.name.trimmed();
    if (name.isEmpty())
        messages << tr("A unit needs a name");
    else if (name.contains(','))
        messages << tr("A unit name holds no comma");
    else if (const CmtdInfTrwk_Unit *other = file.FindUnitByName(name); other && other != replacing)
        messages << tr("Another unit is named %1").arg(file.Text(name));
    if (unit.devId > 0) {
        if (const CmtdInfTrwk_Unit *other = file.FindUnitById(unit.devId); other && other != replacing)
            messages << tr("Device number %1 belongs to %2").arg(unit.devId).arg(file.Text(other->name));
    }
    checkChannels(file, const_cast<CmtdInfTrwk_Unit &>(unit), messages);
    switch (unit.kind) {
    case CmtdInfTrwk_Unit::KindLine:
        checkLine(static_cast<const CmtdInfTrwk_UnitLine &>(unit), messages);
        break;
    case CmtdInfTrwk_Unit::KindTransformer:
        checkTransformer(static_cast<const CmtdInfTrwk_UnitTrm &>(unit), messages);
        break;
    case CmtdInfTrwk_Unit::KindPower:
        checkPower(static_cast<const CmtdInfTrwk_UnitPwr &>(unit), messages);
        break;
    case CmtdInfTrwk_Unit::KindExciter:
        checkExciter(static_cast<const CmtdInfTrwk_UnitExci &>(unit), messages);
        break;
    default:
        if (unit.otherAnalog.empty() && unit.statusChannels.empty())
            messages << tr("A channel group needs at least one channel");
        break;
    }
    return messages;
}

void SetUnitGivenBits(CmtdInfTrwk_Unit &unit)
{
    unit.name = unit.name.trimmed();
    give(unit.flags, CmtdInfTrwk_Unit::HasDevId, unit.devId > 0);
    give(unit.flags, CmtdInfTrwk_Unit::HasName, !unit.name.isEmpty());
    give(unit.flags, CmtdInfTrwk_Unit::HasSysId, !unit.sysId.isEmpty());
    give(unit.flags, CmtdInfTrwk_Unit::HasObjectType, !unit.objectType.isEmpty());
    switch (unit.kind) {
    case CmtdInfTrwk_Unit::KindLine:
        lineBits(static_cast<CmtdInfTrwk_UnitLine &>(unit));
        break;
    case CmtdInfTrwk_Unit::KindTransformer:
        transformerBits(static_cast<CmtdInfTrwk_UnitTrm &>(unit));
        break;
    case CmtdInfTrwk_Unit::KindPower:
        powerBits(static_cast<CmtdInfTrwk_UnitPwr &>(unit));
        break;
    case CmtdInfTrwk_Unit::KindExciter:
        exciterBits(static_cast<CmtdInfTrwk_UnitExci &>(unit));
        break;
    default:
        break;
    }
}

namespace {

template <typename Unit>
CmtdInfTrwk_Unit *place(std::vector<std::unique_ptr<Unit>> &list, std::unique_ptr<CmtdInfTrwk_Unit> unit,
                        const CmtdInfTrwk_Unit *replacing)
{
    std::unique_ptr<Unit> typed(static_cast<Unit *>(unit.release()));
    Unit *taken = typed.get();
    const auto at =
        std::find_if(list.begin(), list.end(), [replacing](const auto &u) { return u.get() == replacing; });
    if (replacing && at != list.end())
        *at = std::move(typed);
    else
        list.push_back(std::move(typed));
    return taken;
}

// The unit goes to the list of its kind, in the place of `replacing` where that is there.
CmtdInfTrwk_Unit *putInList(CCmtd99File &file, std::unique_ptr<CmtdInfTrwk_Unit> unit,
                            const CmtdInfTrwk_Unit *replacing)
{
    switch (unit->kind) {
    case CmtdInfTrwk_Unit::KindLine:
        return place(file.lineUnits, std::move(unit), replacing);
    case CmtdInfTrwk_Unit::KindTransformer:
        return place(file.transformerUnits, std::move(unit), replacing);
    case CmtdInfTrwk_Unit::KindPower:
        return place(file.powerUnits, std::move(unit), replacing);
    case CmtdInfTrwk_Unit::KindExciter:
        return place(file.exciterUnits, std::move(unit), replacing);
    default:
        return place(file.groupUnits, std::move(unit), replacing);
    }
}

} // namespace

CmtdInfTrwk_Unit *InstallUnit(CCmtd99File &file, std::unique_ptr<CmtdInfTrwk_Unit> unit,
                              const CmtdInfTrwk_Unit *replacing)
{
    if (!unit)
        return nullptr;
    if (replacing && replacing->kind != unit->kind)
        file.RemoveUnit(const_cast<CmtdInfTrwk_Unit *>(replacing));
    SetUnitGivenBits(*unit);
    file.maxDeviceId = std::max(file.maxDeviceId, unit->devId);
    CmtdInfTrwk_Unit *taken = putInList(file, std::move(unit), replacing);
    file.LinkStoresToUnits();
    return taken;
}

QByteArray UniqueUnitName(const CCmtd99File &file, const QByteArray &base)
{
    QByteArray name = base;
    for (int n = 2; file.FindUnitByName(name); ++n)
        name = base + " (" + QByteArray::number(n) + ')';
    return name;
}

UnitSnapshot TakeUnitSnapshot(const CCmtd99File &file)
{
    UnitSnapshot snapshot;
    auto take = [&snapshot](const auto &units) {
        for (const auto &unit : units)
            snapshot.push_back(CloneUnit(*unit));
    };
    take(file.lineUnits);
    take(file.transformerUnits);
    take(file.powerUnits);
    take(file.exciterUnits);
    take(file.groupUnits);
    return snapshot;
}

void RestoreUnitSnapshot(CCmtd99File &file, const UnitSnapshot &snapshot)
{
    file.lineUnits.clear();
    file.transformerUnits.clear();
    file.powerUnits.clear();
    file.exciterUnits.clear();
    file.groupUnits.clear();
    for (const auto &unit : snapshot)
        putInList(file, CloneUnit(*unit), nullptr);
    file.LinkStoresToUnits();
}

namespace {

// Renumbers a list of channels, dropping those that are gone; whether any stayed.
bool remapList(std::vector<uint16_t> &list, const std::function<int(int)> &map)
{
    std::vector<uint16_t> kept;
    for (uint16_t index : list) {
        const int to = map(index);
        if (to > 0)
            kept.push_back(uint16_t(to));
    }
    list = std::move(kept);
    return !list.empty();
}

} // namespace

bool RemapUnitChannels(CmtdInfTrwk_Unit &unit, const std::function<int(int)> &analog,
                       const std::function<int(int)> &status)
{
    bool named = false;
    for (const ChannelRole &role : ChannelRolesOf(unit)) {
        for (int place = 0; place < role.count; ++place) {
            int16_t &index = role.places[place];
            if (index <= 0)
                continue;
            index = int16_t(std::max(0, analog(index)));
            named = named || index > 0;
        }
    }
    named = remapList(unit.otherAnalog, analog) || named;
    named = remapList(unit.statusChannels, status) || named;
    if (unit.kind == CmtdInfTrwk_Unit::KindTransformer) {
        auto &t = static_cast<CmtdInfTrwk_UnitTrm &>(unit);
        for (std::vector<uint16_t> *list : {&t.hStatus, &t.mStatus, &t.lStatus, &t.zStatus})
            named = remapList(*list, status) || named;
    }
    return named;
}
