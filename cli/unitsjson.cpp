#include "unitsjson.h"

#include "cmtd99file.h"
#include "jsonwriter.h"
#include "units.h"

namespace {

template <typename Values> void array(JsonWriter &json, const char *key, const Values &values)
{
    json.key(key);
    json.beginArray();
    for (const auto v : values)
        json.value(int(v));
    json.endArray();
}

void number(JsonWriter &json, const char *key, float value)
{
    json.key(key);
    json.valueFloat(value);
}

void text(JsonWriter &json, const CCmtd99File &file, const char *key, const QByteArray &bytes)
{
    json.key(key);
    json.value(file.Text(bytes));
}

void writeBase(JsonWriter &json, const CCmtd99File &file, const CmtdInfTrwk_Unit &unit)
{
    json.field("kind", int(unit.kind));
    json.field("flags", static_cast<long long>(unit.flags));
    json.field("devId", int(unit.devId));
    text(json, file, "name", unit.name);
    text(json, file, "sysId", unit.sysId);
    text(json, file, "objectType", unit.objectType);
    array(json, "otherAnalog", unit.otherAnalog);
    array(json, "statusChannels", unit.statusChannels);
}

void writeLine(JsonWriter &json, const CmtdInfTrwk_UnitLine &u)
{
    const struct
    {
        const char *key;
        float value;
    } numbers[] = {{"length", u.length},   {"r1", u.r1},           {"x1", u.x1},
                   {"r0", u.r0},           {"x0", u.x0},           {"c1", u.c1},
                   {"g1", u.g1},           {"c0", u.c0},           {"g0", u.g0},
                   {"mutualR", u.mutualR}, {"mutualX", u.mutualX}, {"reactor", u.reactor}};
    for (const auto &n : numbers)
        number(json, n.key, n.value);
    array(json, "taChns", u.taChns);
    json.field("taPolarity", int(u.taPolarity));
    array(json, "taChns2", u.taChns2);
    json.key("tvChns");
    json.beginArray();
    for (int i = 0; i < u.tvCount; ++i) {
        json.beginArray();
        for (const int16_t v : u.tvChns[size_t(i)])
            json.value(int(v));
        json.endArray();
    }
    json.endArray();
}

void writeTransformer(JsonWriter &json, const CCmtd99File &file, const CmtdInfTrwk_UnitTrm &u)
{
    number(json, "capacity", u.capacity);
    text(json, file, "taSelfComp", u.taSelfComp);
    json.field("windingNum", int(u.windingNum));
    const struct
    {
        const char *key;
        const TrmSide &side;
        const ChannelSet &tv;
    } sides[] = {{"sideH", u.sideH, u.hTv}, {"sideM", u.sideM, u.mTv}, {"sideL", u.sideL, u.lTv}};
    for (const auto &s : sides) {
        json.key(s.key);
        json.beginObject();
        json.field("flags", static_cast<long long>(s.side.flags));
        text(json, file, "windingText", s.side.windingText);
        json.field("windingMode", int(s.side.windingMode));
        number(json, "ratedKv", s.side.ratedKv);
        json.field("branchNum", int(s.side.branchNum));
        array(json, "tv", s.tv);
        json.endObject();
    }
    json.key("taId");
    json.beginArray();
    for (const ChannelSet &set : u.taId) {
        json.beginArray();
        for (const int16_t v : set)
            json.value(int(v));
        json.endArray();
    }
    json.endArray();
}

void writePower(JsonWriter &json, const CCmtd99File &file, const CmtdInfTrwk_UnitPwr &u)
{
    json.field("trmId", int(u.trmId));
    text(json, file, "trmName", u.trmName);
    number(json, "freq", u.freq);
    number(json, "capacity", u.capacity);
    number(json, "factor", u.factor);
    number(json, "v1", u.v1);
    json.field("branchCount", int(u.branchCount));
    array(json, "branchNum", u.branchNum);
    json.field("excitationMode", int(u.excitationMode));
    array(json, "taChns", u.taChns);
    array(json, "tvChns", u.tvChns);
}

template <typename Units, typename Write>
void writeList(JsonWriter &json, const CCmtd99File &file, const char *key, const Units &units, Write write)
{
    json.key(key);
    json.beginArray();
    for (const auto &unit : units) {
        json.beginObject();
        writeBase(json, file, *unit);
        write(*unit);
        json.endObject();
    }
    json.endArray();
}

} // namespace

void WriteUnitsJson(JsonWriter &json, const CCmtd99File &file)
{
    json.key("units");
    json.beginObject();
    writeList(json, file, "lines", file.lineUnits,
              [&](const CmtdInfTrwk_UnitLine &u) { writeLine(json, u); });
    writeList(json, file, "transformers", file.transformerUnits,
              [&](const CmtdInfTrwk_UnitTrm &u) { writeTransformer(json, file, u); });
    writeList(json, file, "powers", file.powerUnits,
              [&](const CmtdInfTrwk_UnitPwr &u) { writePower(json, file, u); });
    writeList(json, file, "exciters", file.exciterUnits, [&](const CmtdInfTrwk_UnitExci &u) {
        json.field("pwrId", int(u.pwrId));
        number(json, "freq", u.freq);
        number(json, "v1", u.v1);
        array(json, "taChns", u.taChns);
        array(json, "tvChns", u.tvChns);
    });
    writeList(json, file, "groups", file.groupUnits, [](const CmtdInfTrwk_Unit &) {});
    json.endObject();
}
