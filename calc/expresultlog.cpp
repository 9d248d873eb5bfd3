// The result log of a script run, and the hand-over of result channels to the recording: a
// statement with a quoted name whose expression gives a channel becomes a virtual channel, and
// one of the same name made earlier is replaced by it.

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchannel.h"
#include "expanamulti.h"
#include "virtualchannel.h"

#include <QCoreApplication>

#include <utility>

#define EXP_TR(text) QT_TRANSLATE_NOOP("CExpAnaMulti", text)

namespace {

// The target takes the description and the samples of the script's channel; it keeps its own
// name and index. The script's channel ends with the target's former array.
void adoptChannel(CChnMapAnalog &target, CChnMapAnalog &source)
{
    CmtdChn_Analog &to = *target.config;
    const QByteArray name = to.ch_id;
    const QByteArray alias = to.alias;
    const int16_t index = to.index;
    constexpr uint32_t own =
        CmtdChn_Analog::IdGiven | CmtdChn_Analog::IndexGiven | CmtdChn_Analog::AliasGiven;
    const uint32_t ownFlags = to.flags & own;
    to.Copy(*source.config);
    to.ch_id = name;
    to.alias = alias;
    to.index = index;
    to.flags = (to.flags & ~own) | ownFlags;

    std::swap(target.samples, source.samples);
    std::swap(target.sampleCount, source.sampleCount);
    target.chnClass = source.chnClass;
    target.kindCode = source.kindCode;
    target.phase = source.phase;
    target.unit = source.unit;
    target.colour = source.colour;
    target.gain = source.gain;
    target.offset = source.offset;
    target.rangeMin = source.rangeMin;
    target.rangeMax = source.rangeMax;
    target.periodic = source.periodic;
    target.direct = source.direct;
    target.isVirtual = true;
    target.RecalcExtremes();
}

QString complexText(const ComplexD &c)
{
    return ExpFormat("%.6f%s%.6f", c.re, c.im < 0.0 ? "-j" : "+j", c.im < 0.0 ? -c.im : c.im);
}

} // namespace

ExpLogLine CExpAnaMulti::logLine(ExpStatement &statement)
{
    ExpValue &value = statement.value;
    const char *label = statement.label.constData();
    const char *name = statement.resultName.constData();
    ExpLogLine line;
    if (statement.kind == ExpStatementChannel && value.isChannel()) {
        ExpValue owned;
        QString message;
        CChnMapAnalog *target = nullptr;
        if (TakeValue(value, owned))
            target = MakeVirtualChannel(*m_file, statement.resultName, message);
        else
            message = QCoreApplication::translate("CExpAnaMulti", "Error: Memory is not enough!");
        if (!target)
            return ExpLogLine{message};
        adoptChannel(*target, *owned.channel);
        line.text = ExpFormat(EXP_TR("[%s] Out a new Virtual Channel [%s]!"), label, target->Name());
        line.channel = target;
    } else if (value.type == ExpTypeChannel) {
        line.text = statement.named
                        ? ExpFormat(EXP_TR("[%s] Out a Unnamed temporary Channel [%s]!"), label, name)
                        : ExpFormat(EXP_TR("[%s] Out a Unnamed temporary Channel!"), label);
    } else if (value.type == ExpTypeChannelRef) {
        line.text = ExpFormat(EXP_TR("[%s] Return originally Channel [%s]!"), label,
                              value.channel ? value.channel->Name() : "");
        value.clear();
    } else if (value.type == ExpTypeComplex) {
        const QByteArray number = complexText(value.complex).toUtf8();
        line.text = statement.named ? ExpFormat(EXP_TR("[%s] Result = %s, Stored in [%s]"), label,
                                                number.constData(), name)
                                    : ExpFormat(EXP_TR("[%s] Result = %s"), label, number.constData());
    } else if (value.isConstant()) {
        line.text = statement.named
                        ? ExpFormat(EXP_TR("[%s] Result = %.6f, Stored in [%s]"), label, value.value, name)
                        : ExpFormat(EXP_TR("[%s] Result = %.6f"), label, value.value);
    }
    return line;
}

std::vector<ExpLogLine> CExpAnaMulti::TakeResults()
{
    std::vector<ExpLogLine> lines;
    if (ExpMessages.empty()) {
        lines.push_back(ExpLogLine{QCoreApplication::translate("CExpAnaMulti", "No Error!")});
    } else {
        lines.push_back(
            ExpLogLine{ExpFormat(EXP_TR("***** [%d] Errors and Warnings *****"), int(ExpMessages.size()))});
        for (const auto &message : ExpMessages)
            lines.push_back(ExpLogLine{message.second});
    }
    if (!m_file)
        return lines;
    bool added = false;
    for (const auto &statement : m_statements) {
        ExpLogLine line = logLine(*statement);
        added = added || line.channel;
        if (!line.text.isEmpty())
            lines.push_back(std::move(line));
    }
    // New channels take their place among the vertical scales of their class and unit.
    if (added && !m_file->scaleGroups.empty())
        m_file->BuildScaleGroups();
    return lines;
}
