#include "expvalue.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchannel.h"
#include "phasor.h"

#include <algorithm>
#include <new>

namespace {

// The language runs on the interface thread alone: one fault flag and one byte count.
bool memoryFault = false;
int64_t liveBytes = 0;

// An owned store of `count` samples for `record`, counted against the budget; null (with the
// fault set) when refused.
std::unique_ptr<CChnMapAnalog> ownedStore(CmtdChn_Analog *record, int count, int64_t &bytes)
{
    bytes = int64_t(std::max(count, 0)) * int64_t(sizeof(float));
    if (liveBytes + bytes > kExpChannelBudget) {
        memoryFault = true;
        return nullptr;
    }
    std::unique_ptr<CChnMapAnalog> map(new (std::nothrow) CChnMapAnalog(record, true));
    if (!map || !map->allocate(std::max(count, 0))) {
        memoryFault = true;
        return nullptr;
    }
    liveBytes += bytes;
    return map;
}

} // namespace

bool ExpMemoryFault()
{
    return memoryFault;
}

void ExpSetMemoryFault()
{
    memoryFault = true;
}

void ExpClearMemoryFault()
{
    memoryFault = false;
}

ExpValue::~ExpValue()
{
    clear();
}

void ExpValue::clear()
{
    // The store goes before the record it points to.
    m_map.reset();
    m_record.reset();
    liveBytes -= m_bytes;
    m_bytes = 0;
    channel = nullptr;
    type = ExpTypeNone;
    value = 0.0;
    complex = ComplexD{};
}

void ExpValue::own(std::unique_ptr<CmtdChn_Analog> record, std::unique_ptr<CChnMapAnalog> map, int64_t bytes)
{
    clear();
    m_record = std::move(record);
    m_map = std::move(map);
    m_bytes = bytes;
    channel = m_map.get();
    type = ExpTypeChannel;
}

void ExpValue::setConstant(double v)
{
    clear();
    type = ExpTypeConstant;
    value = v;
}

void ExpValue::setComplex(const ComplexD &c)
{
    clear();
    type = ExpTypeComplex;
    complex = c;
}

void ExpValue::setChannelRef(CChnMapAnalog *chn)
{
    clear();
    type = ExpTypeChannelRef;
    channel = chn;
}

bool CopyChannelValue(const CChnMapAnalog &source, ExpValue &out)
{
    out.clear();
    if (!source.config)
        return false;
    std::unique_ptr<CmtdChn_Analog> record(new (std::nothrow) CmtdChn_Analog);
    if (!record) {
        memoryFault = true;
        return false;
    }
    record->Copy(*source.config);
    record->ratedFreq = RatedFreq(source);
    record->flags |= CmtdChn_Analog::RatedFreqGiven;
    // A channel selection treats the copy as the file's channel it was computed from.
    record->deviceIndex = source.isVirtual ? source.config->deviceIndex : source.config->index;
    if (record->deviceIndex >= 0)
        record->flags |= CmtdChn_Analog::DeviceIndexGiven;
    int64_t bytes = 0;
    std::unique_ptr<CChnMapAnalog> map =
        ownedStore(record.get(), source.Values() ? source.sampleCount : 0, bytes);
    if (!map)
        return false;
    // What the store alone knows of the source: its class where a curve changed it, its curve
    // flags, phase and pen.
    map->chnClass = source.chnClass;
    map->phase = source.phase;
    map->colour = source.colour;
    map->periodic = source.periodic;
    map->direct = source.direct;
    if (source.Values())
        std::copy(source.Values(), source.Values() + source.sampleCount, map->Values());
    out.own(std::move(record), std::move(map), bytes);
    return true;
}

bool NewChannelValue(const CCmtd99File &file, ExpValue &out)
{
    out.clear();
    std::unique_ptr<CmtdChn_Analog> record(new (std::nothrow) CmtdChn_Analog);
    if (!record) {
        memoryFault = true;
        return false;
    }
    record->Reset(file.firstFreeChannelIndex);
    int64_t bytes = 0;
    std::unique_ptr<CChnMapAnalog> map = ownedStore(record.get(), std::max(file.loadedPoints, 0), bytes);
    if (!map)
        return false;
    out.own(std::move(record), std::move(map), bytes);
    return true;
}

bool CopyValue(const ExpValue &from, ExpValue &to)
{
    if (from.isChannel())
        return from.channel && CopyChannelValue(*from.channel, to);
    to.clear();
    to.type = from.type;
    to.value = from.value;
    to.complex = from.complex;
    return true;
}

bool TakeValue(ExpValue &from, ExpValue &to)
{
    if (&from == &to)
        return true;
    if (from.type != ExpTypeChannel) {
        const bool copied = CopyValue(from, to);
        from.clear();
        return copied;
    }
    to.own(std::move(from.m_record), std::move(from.m_map), from.m_bytes);
    from.m_bytes = 0;
    from.clear();
    return true;
}
