// Writing the unit sections of the extension file, and what a unit has to do with channels.

#include "units.h"

#include "cmtd99file.h"
#include "safewrite.h"

#include <algorithm>

namespace {

bool holds(const ChannelSet &set, uint16_t index, int members)
{
    for (int i = 0; i < members; ++i) {
        if (set[size_t(i)] > 0 && uint16_t(set[size_t(i)]) == index)
            return true;
    }
    return false;
}

bool inList(const std::vector<uint16_t> &list, uint16_t index)
{
    return std::find(list.begin(), list.end(), index) != list.end();
}

// "KEY=a, b, c, d" for a fixed set of channel indexes.
template <size_t N> void writeSet(CTextOutput &out, const char *key, const std::array<int16_t, N> &set)
{
    out.Printf("%s=", key);
    for (size_t i = 0; i < N; ++i)
        out.Printf(i ? ", %d" : "%d", int(set[i]));
    out.Printf("\n");
}

// Sets of the transformer, generator and exciter are written when one of their first three
// values is above 0; a voltage set when any of its four is.
bool worthWriting(const ChannelSet &set, int members = 3)
{
    return std::any_of(set.begin(), set.begin() + members, [](int16_t v) { return v > 0; });
}

void writeList(CTextOutput &out, const char *key, const std::vector<uint16_t> &list)
{
    if (list.empty())
        return;
    out.Printf("%s=", key);
    for (size_t i = 0; i < list.size(); ++i)
        out.Printf(i ? ", %u" : "%u", unsigned(list[i]));
    out.Printf("\n");
}

void writeHead(CTextOutput &out, const char *family, int number, const CmtdInfTrwk_Unit &unit)
{
    out.Printf("[TRWK %s_#%d]\n", family, number);
    out.Printf("DEV_ID=%d,%s\n", int(unit.devId), unit.name.constData());
    out.Printf("SYS_ID=%s\n", unit.sysId.constData());
    out.Printf("OBJECT_TYPE=%s\n", unit.objectType.constData());
}

void writeOtherKeys(CTextOutput &out, const CmtdInfTrwk_Unit &unit)
{
    for (const InfKeyValue &kv : unit.otherKeys)
        out.Printf("%s=%s\n", kv.key.constData(), kv.value.constData());
}

void writeLine(CTextOutput &out, const CmtdInfTrwk_UnitLine &u)
{
    out.Printf("LENGTH=%.3f(km)\n", double(u.length));
    out.Printf("RX=%.10f(Ω/km), %.10f(Ω/km), %.10f(Ω/km), %.10f(Ω/km)\n", double(u.r1), double(u.x1),
               double(u.r0), double(u.x0));
    out.Printf("CG=%.10f(μf/km), %.10f(S/km), %.10f(μf/km), %.10f(S/km)\n", double(u.c1), double(u.g1),
               double(u.c0), double(u.g0));
    out.Printf("MRX=%.10f(Ω/km), %.10f(Ω/km)\n", double(u.mutualR), double(u.mutualX));
    if (u.reactor > 0.0f)
        out.Printf("REACTOR=%.10f(Ω)\n", double(u.reactor));
    else
        out.Printf("REACTOR=NO\n");
    const std::array<int16_t, 5> ta = {u.taChns[0], u.taChns[1], u.taChns[2], u.taChns[3], u.taPolarity};
    const std::array<int16_t, 5> ta2 = {u.taChns2[0], u.taChns2[1], u.taChns2[2], u.taChns2[3],
                                        u.taPolarity2};
    writeSet(out, "TA_CHNS", ta);
    writeSet(out, "TA_CHNS_#2", ta2);
    for (int i = 0; i < u.tvCount && i < CmtdInfTrwk_UnitLine::kTvSets; ++i)
        writeSet(out, "TV_CHNS", u.tvChns[size_t(i)]);
    writeList(out, "OTH_ACHNS", u.otherAnalog);
    writeList(out, "STATUS_CHNS", u.statusChannels);
}

void writeSideParams(CTextOutput &out, const CmtdInfTrwk_UnitTrm &u)
{
    const TrmSide *sides[] = {&u.sideH, &u.sideM, &u.sideL};
    static const char *const kKeys[] = {"H_PARAM", "M_PARAM", "L_PARAM"};
    for (int s = 0; s < 3; ++s) {
        if (s == 1 && u.windingNum == 2)
            continue;
        out.Printf("%s=%s, %.3f(KV), %d\n", kKeys[s], sides[s]->windingText.constData(),
                   double(sides[s]->ratedKv), int(sides[s]->branchNum));
    }
}

void writeZeroSequence(CTextOutput &out, const CmtdInfTrwk_UnitTrm &u)
{
    auto single = [&out](const char *key, int16_t value) {
        if (value > 0)
            out.Printf("%s=%d\n", key, int(value));
    };
    single("H_TA_ZS", u.hTaZs);
    if (u.windingNum != 1)
        single("H_TA_ZS_GAP", u.hTaZsGap);
    if (u.windingNum != 2) {
        single("M_TA_ZS", u.mTaZs);
        if (u.windingNum != 1)
            single("M_TA_ZS_GAP", u.mTaZsGap);
    }
    single("L_TA_ZS", u.lTaZs);
    single("L_TA_ZS_GAP", u.lTaZsGap);
}

void writeTransformer(CTextOutput &out, const CmtdInfTrwk_UnitTrm &u)
{
    out.Printf("CAPACITY=%.3f(MVA)\n", double(u.capacity));
    out.Printf("TA_SELF_COMP=%s\n", u.taSelfComp.constData());
    out.Printf("WINDING_NUM=%d\n", int(u.windingNum));
    writeSideParams(out, u);
    for (size_t i = 0; i < u.taId.size(); ++i) {
        if (worthWriting(u.taId[i]))
            writeSet(out, QByteArray("TA_Id_#" + QByteArray::number(int(i) + 1)).constData(), u.taId[i]);
    }
    if (u.windingNum == 1) {
        for (size_t i = 0; i < u.taIdcw.size(); ++i) {
            if (worthWriting(u.taIdcw[i]))
                writeSet(out, QByteArray("TA_Idcw_#" + QByteArray::number(int(i) + 1)).constData(),
                         u.taIdcw[i]);
        }
    }
    if (worthWriting(u.hTaBk))
        writeSet(out, "H_TA_BK", u.hTaBk);
    writeZeroSequence(out, u);
    if (worthWriting(u.hTv, 4))
        writeSet(out, "H_TV_CHNS", u.hTv);
    if (u.windingNum != 2 && worthWriting(u.mTv, 4))
        writeSet(out, "M_TV_CHNS", u.mTv);
    if (worthWriting(u.lTv, 4))
        writeSet(out, "L_TV_CHNS", u.lTv);
    writeList(out, "OTH_ACHNS", u.otherAnalog);
    writeList(out, "H_STATUS_CHNS", u.hStatus);
    writeList(out, "M_STATUS_CHNS", u.mStatus);
    writeList(out, "L_STATUS_CHNS", u.lStatus);
    writeList(out, "Z_STATUS_CHNS", u.zStatus);
    writeList(out, "OTH_STATUS_CHNS", u.statusChannels);
}

void writePower(CTextOutput &out, const CmtdInfTrwk_UnitPwr &u)
{
    out.Printf("CAPACITY=%.3f(MVA)\n", double(u.capacity));
    out.Printf("FREQ=%.3f(Hz)\n", double(u.freq));
    out.Printf("TRM_ID=%lu, %s\n", static_cast<unsigned long>(static_cast<uint32_t>(u.trmId)),
               u.trmName.constData());
    out.Printf("FACTOR=%.5f\n", double(u.factor));
    out.Printf("V1=%.5f(KV)\n", double(u.v1));
    out.Printf("BRANCH_NUM=%d, %d, %d\n", int(u.branchNum[0]), int(u.branchNum[1]), int(u.branchNum[2]));
    out.Printf("Rotor_I=%.5f(A)\n", double(u.rotorI));
    out.Printf("Rotor_V2=%.5f(mV)\n", double(u.rotorV2));
    out.Printf("Ufe=%.5f(V), %.5f(V)\n", double(u.ufe[0]), double(u.ufe[1]));
    out.Printf("X=%.5f(p.u.), %.5f(p.u.), %.5f(p.u.), %.5f(p.u.)\n", double(u.xd), double(u.xq),
               double(u.xdTransient), double(u.xs));
    out.Printf("EXCITATION_MODE=%d\n", int(u.excitationMode));
    out.Printf("IGT_DIR=%d\n", int(u.igtDir));
    if (worthWriting(u.tvChns, 4))
        writeSet(out, "TV_CHNS", u.tvChns);
    if (worthWriting(u.taChns))
        writeSet(out, "TA_CHNS", u.taChns);
    for (size_t i = 0; i < u.taZ.size(); ++i) {
        if (worthWriting(u.taZ[i]))
            writeSet(out, QByteArray("TA_Z" + QByteArray::number(int(i) + 1) + "_CHNS").constData(),
                     u.taZ[i]);
    }
    if (worthWriting(u.taZm))
        writeSet(out, "TA_ZM_CHNS", u.taZm);
    if (std::any_of(u.ufeChns.begin(), u.ufeChns.end(), [](int16_t v) { return v > 0; }))
        writeSet(out, "Ufe_CHNS", u.ufeChns);
    if (u.ifeChn > 0)
        out.Printf("Ife_CHN=%d\n", int(u.ifeChn));
    if (std::any_of(u.unChns.begin(), u.unChns.end(), [](int16_t v) { return v > 0; }))
        writeSet(out, "UN_CHNS", u.unChns);
    if (u.taIdoChn > 0)
        out.Printf("TA_Ido_CHN=%d\n", int(u.taIdoChn));
    writeList(out, "OTH_ACHNS", u.otherAnalog);
    writeList(out, "STATUS_CHNS", u.statusChannels);
}

void writeExciter(CTextOutput &out, const CmtdInfTrwk_UnitExci &u)
{
    out.Printf("FREQ=%.3f(Hz)\n", double(u.freq));
    out.Printf("PWR_ID=%lu, %s\n", static_cast<unsigned long>(static_cast<uint32_t>(u.pwrId)),
               u.pwrName.constData());
    out.Printf("V1=%.5f(KV)\n", double(u.v1));
    if (worthWriting(u.tvChns, 4))
        writeSet(out, "TV_CHNS", u.tvChns);
    if (worthWriting(u.taChns))
        writeSet(out, "TA_CHNS", u.taChns);
    if (worthWriting(u.taZ))
        writeSet(out, "TA_Z_CHNS", u.taZ);
    writeList(out, "OTH_ACHNS", u.otherAnalog);
    writeList(out, "STATUS_CHNS", u.statusChannels);
}

template <typename Unit, typename Write>
void writeAll(CTextOutput &out, const char *family, const std::vector<std::unique_ptr<Unit>> &units,
              Write write)
{
    int number = 0;
    for (const auto &unit : units) {
        writeHead(out, family, ++number, *unit);
        write(out, *unit);
        writeOtherKeys(out, *unit);
    }
}

} // namespace

bool CmtdInfTrwk_UnitLine::UsesAnalogChannel(uint16_t index) const
{
    if (holds(taChns, index, 4) || holds(taChns2, index, 4))
        return true;
    for (const ChannelSet &set : tvChns) {
        if (holds(set, index, 4))
            return true;
    }
    return CmtdInfTrwk_Unit::UsesAnalogChannel(index);
}

bool CmtdInfTrwk_UnitTrm::UsesAnalogChannel(uint16_t index) const
{
    // Voltages and the zero-sequence singles count whole; of a current set the neutral, the
    // fourth member, does not count as used.
    for (const ChannelSet *set : {&hTv, &mTv, &lTv}) {
        if (holds(*set, index, 4))
            return true;
    }
    for (int16_t single : {hTaZs, hTaZsGap, mTaZs, mTaZsGap, lTaZs, lTaZsGap}) {
        if (single > 0 && uint16_t(single) == index)
            return true;
    }
    for (const ChannelSet &set : taId) {
        if (holds(set, index, 3))
            return true;
    }
    for (const ChannelSet &set : taIdcw) {
        if (holds(set, index, 3))
            return true;
    }
    return holds(hTaBk, index, 3) || CmtdInfTrwk_Unit::UsesAnalogChannel(index);
}

bool CmtdInfTrwk_UnitTrm::UsesStatusChannel(uint16_t index) const
{
    for (const std::vector<uint16_t> *list : {&hStatus, &mStatus, &lStatus, &zStatus}) {
        if (inList(*list, index))
            return true;
    }
    return CmtdInfTrwk_Unit::UsesStatusChannel(index);
}

bool CmtdInfTrwk_UnitPwr::UsesAnalogChannel(uint16_t index) const
{
    if (holds(tvChns, index, 4))
        return true;
    for (int16_t single :
         {ufeChns[0], ufeChns[1], ufeChns[2], ifeChn, unChns[0], unChns[1], unChns[2], taIdoChn}) {
        if (single > 0 && uint16_t(single) == index)
            return true;
    }
    for (const ChannelSet *set : {&taChns, &taZ[0], &taZ[1], &taZ[2], &taZm}) {
        if (holds(*set, index, 3))
            return true;
    }
    return CmtdInfTrwk_Unit::UsesAnalogChannel(index);
}

bool CmtdInfTrwk_UnitExci::UsesAnalogChannel(uint16_t index) const
{
    return holds(tvChns, index, 4) || holds(taChns, index, 3) || holds(taZ, index, 3) ||
           CmtdInfTrwk_Unit::UsesAnalogChannel(index);
}

int16_t WindingModeCode(const QByteArray &text)
{
    // The plain letter, the form with "n" and the form with "g" are one connection: "Y12",
    // "Yn12", "Yg12".
    QByteArray form = text.trimmed().toUpper();
    if (form.size() >= 2 && (form.at(1) == 'N' || form.at(1) == 'G'))
        form.remove(1, 1);
    static const struct
    {
        const char *form;
        int16_t code;
    } kModes[] = {{"Y", 101},   {"D", 102},   {"Y12", 110}, {"Y0", 110}, {"Y6", 111}, {"D1", 112},
                  {"D5", 113},  {"D7", 114},  {"D11", 115}, {"Y1", 130}, {"Y5", 131}, {"Y7", 132},
                  {"Y11", 133}, {"D12", 134}, {"D0", 134},  {"D6", 135}};
    for (const auto &mode : kModes) {
        if (form == mode.form)
            return mode.code;
    }
    return 100;
}

void WriteInfUnitSections(CTextOutput &out, const CCmtd99File &file, uint32_t mask)
{
    if (mask & InfLine)
        writeAll(out, "Line", file.lineUnits, writeLine);
    if (mask & InfTransformer)
        writeAll(out, "Transformer", file.transformerUnits, writeTransformer);
    if (mask & InfPower)
        writeAll(out, "Power", file.powerUnits, writePower);
    if (mask & InfExcitation)
        writeAll(out, "Excitation", file.exciterUnits, writeExciter);
    if (mask & InfChannelsGroup)
        writeAll(out, "Channels_Group", file.groupUnits, [](CTextOutput &o, const CmtdInfTrwk_Unit &u) {
            writeList(o, "OTH_ACHNS", u.otherAnalog);
            writeList(o, "STATUS_CHNS", u.statusChannels);
        });
}
