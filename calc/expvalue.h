#pragma once

// What an expression of a script evaluates to: a constant, a complex number, one of the
// recording's channels (borrowed), or a channel of the script's own (owned, with its record).
// A script has value semantics: every copy of a channel is a new channel of its own, so that an
// operator may work in place on its left-hand value. Allocations of channel arrays go through
// here; a refused one sets the memory fault that the script reports once.

#include "complexd.h"

#include <cstdint>
#include <memory>

class CCmtd99File;
class CChnMapAnalog;
class CmtdChn_Analog;

// The tags of a value (and the types a compiled node expects).
enum ExpValueType : int32_t
{
    ExpTypeNone = 0,
    ExpTypeConstant = 4, // 3 is a constant too
    ExpTypeComplex = 5,
    ExpTypeChannelRef = 6, // a channel of the recording, read only
    ExpTypeChannel = 7     // a channel of the script, owned by the value
};

class ExpValue
{
public:
    ExpValue() = default;
    ExpValue(const ExpValue &) = delete;
    ExpValue &operator=(const ExpValue &) = delete;
    ~ExpValue();

    // Back to type 0; an owned channel is destroyed with its record.
    void clear();
    void setConstant(double v);
    void setComplex(const ComplexD &c);
    void setChannelRef(CChnMapAnalog *chn);
    bool isChannel() const { return type == ExpTypeChannelRef || type == ExpTypeChannel; }
    bool isConstant() const { return type == 3 || type == ExpTypeConstant; }

    int32_t type = ExpTypeNone;
    double value = 0.0;
    ComplexD complex;
    // Type 6: the recording's store; type 7: the value's own store (its record is `config`).
    CChnMapAnalog *channel = nullptr;

private:
    friend bool CopyChannelValue(const CChnMapAnalog &source, ExpValue &out);
    friend bool NewChannelValue(const CCmtd99File &file, ExpValue &out);
    friend bool TakeValue(ExpValue &from, ExpValue &to);
    // Takes over a channel of the script's own, whose array holds `bytes` of the budget.
    void own(std::unique_ptr<CmtdChn_Analog> record, std::unique_ptr<CChnMapAnalog> map, int64_t bytes);
    std::unique_ptr<CmtdChn_Analog> m_record;
    std::unique_ptr<CChnMapAnalog> m_map;
    int64_t m_bytes = 0; // of the array, counted against the script's budget
};

// A new channel of type 7 with every descriptive field of `source` (its rated frequency by the
// 50 Hz rule) and a copy of its samples. False, with the memory fault set, when the array
// cannot be had or the script's channels would pass their budget.
bool CopyChannelValue(const CChnMapAnalog &source, ExpValue &out);
// A new, zeroed analog channel of the recording's length, of no unit.
bool NewChannelValue(const CCmtd99File &file, ExpValue &out);
// `to` becomes a copy of `from`; channels are copied.
bool CopyValue(const ExpValue &from, ExpValue &to);
// `to` takes `from` over: an owned channel moves without a copy, a borrowed one is copied.
bool TakeValue(ExpValue &from, ExpValue &to);

// Bytes that the channels of all living values may hold together.
constexpr int64_t kExpChannelBudget = int64_t(1) << 30;
// Set when an allocation of the script failed; the script then stops with the memory message.
bool ExpMemoryFault();
void ExpSetMemoryFault();
void ExpClearMemoryFault();
