#include "units.h"

#include "cmtd99file.h"
#include "safewrite.h"

#include <algorithm>
#include <functional>

namespace {

bool inList(const std::vector<uint16_t> &list, uint16_t index)
{
    return std::find(list.begin(), list.end(), index) != list.end();
}

template <typename Units> CmtdInfTrwk_Unit *findIn(const Units &units, auto &&match)
{
    for (const auto &unit : units) {
        if (match(*unit))
            return unit.get();
    }
    return nullptr;
}

template <typename Units> bool removeFrom(Units &units, const CmtdInfTrwk_Unit *unit)
{
    const auto it =
        std::find_if(units.begin(), units.end(), [unit](const auto &u) { return u.get() == unit; });
    if (it == units.end())
        return false;
    units.erase(it);
    return true;
}

} // namespace

bool CmtdInfTrwk_Unit::UsesAnalogChannel(uint16_t index) const
{
    return inList(otherAnalog, index);
}

bool CmtdInfTrwk_Unit::UsesStatusChannel(uint16_t index) const
{
    return inList(statusChannels, index);
}

CmtdInfTrwk_Unit *CCmtd99File::FindUnit(const std::function<bool(const CmtdInfTrwk_Unit &)> &match) const
{
    // Lines, transformers, power units, exciters, groups: the order every look-up keeps.
    CmtdInfTrwk_Unit *found = findIn(lineUnits, match);
    if (!found)
        found = findIn(transformerUnits, match);
    if (!found)
        found = findIn(powerUnits, match);
    if (!found)
        found = findIn(exciterUnits, match);
    if (!found)
        found = findIn(groupUnits, match);
    return found;
}

CmtdInfTrwk_Unit *CCmtd99File::FindUnitById(int32_t devId) const
{
    if (devId < 1)
        return nullptr;
    return FindUnit([devId](const CmtdInfTrwk_Unit &unit) { return unit.devId == devId; });
}

CmtdInfTrwk_Unit *CCmtd99File::FindUnitByName(const QByteArray &name) const
{
    if (name.isEmpty())
        return nullptr;
    return FindUnit([&name](const CmtdInfTrwk_Unit &unit) {
        return qstricmp(unit.name.constData(), name.constData()) == 0;
    });
}

bool CCmtd99File::RemoveUnit(CmtdInfTrwk_Unit *unit)
{
    return removeFrom(lineUnits, unit) || removeFrom(transformerUnits, unit) ||
           removeFrom(powerUnits, unit) || removeFrom(exciterUnits, unit) || removeFrom(groupUnits, unit);
}

bool CCmtd99File::HasUnit(const CmtdInfTrwk_Unit *unit) const
{
    return unit && FindUnit([unit](const CmtdInfTrwk_Unit &u) { return &u == unit; });
}

void CCmtd99File::LinkStoresToUnits()
{
    for (const auto &map : analogMaps)
        map->plantUnit = map->config ? FindUnitByName(map->config->ccbm.trimmed()) : nullptr;
    for (const auto &map : statusMaps)
        map->plantUnit = map->config ? FindUnitByName(map->config->ccbm.trimmed()) : nullptr;
}

void CmtdInfTrwk_UnitPwr::CompactBranches()
{
    std::array<int16_t, 3> branches{};
    std::array<ChannelSet, 3> sets{};
    int count = 0;
    for (size_t i = 0; i < 3; ++i) {
        if (branchNum[i] > 0) {
            branches[size_t(count)] = branchNum[i];
            sets[size_t(count)] = taZ[i];
            ++count;
        }
    }
    branchNum = branches;
    taZ = sets;
    branchCount = static_cast<int16_t>(count);
}
