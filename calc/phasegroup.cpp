#include "phasegroup.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "units.h"

#include <algorithm>

std::array<CChnMapAnalog *, 3> ThreePhaseGroup(const CCmtd99File &file, CChnMapAnalog *first)
{
    std::array<CChnMapAnalog *, 3> group = {first, nullptr, nullptr};
    if (!first)
        return group;
    const auto &maps = file.analogMaps;
    const auto at =
        std::find_if(maps.begin(), maps.end(), [first](const auto &m) { return m.get() == first; });
    if (at == maps.end())
        return group;
    const CmtdInfTrwk_Unit *unit = file.FindUnit(
        [first](const CmtdInfTrwk_Unit &u) { return u.UsesAnalogChannel(uint16_t(first->Index())); });
    // The channels after the chosen one first, then those before it.
    std::vector<CChnMapAnalog *> order;
    for (auto it = at + 1; it != maps.end(); ++it)
        order.push_back(it->get());
    for (auto it = maps.begin(); it != at; ++it)
        order.push_back(it->get());
    auto fits = [&](const CChnMapAnalog *c) {
        return c->Class() == first->Class() && (!unit || unit->UsesAnalogChannel(uint16_t(c->Index())));
    };
    if (first->Phase() == PhaseA) {
        for (int k = 1; k < 3; ++k) {
            const auto found = std::find_if(order.begin(), order.end(), [&](const CChnMapAnalog *c) {
                return fits(c) && c->Phase() == PhaseA + k;
            });
            if (found != order.end())
                group[size_t(k)] = *found;
        }
        return group;
    }
    // Without a phase, the next two channels of the class stand for B and C.
    size_t k = 1;
    for (CChnMapAnalog *c : order) {
        if (k < 3 && fits(c) && c->Phase() == PhaseUnknown)
            group[k++] = c;
    }
    return group;
}
