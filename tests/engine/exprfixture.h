#pragma once

// A recording of two channels for the expression suites, and the script run as the expression
// form runs it: compile, evaluate only without any message, then the result log.

#include "expanamulti.h"
#include "memoryrecording.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

// Messages and log lines as text when a comparison fails.
inline void PrintTo(const QString &text, std::ostream *os)
{
    *os << '"' << text.toStdString() << '"';
}

// 400 samples at 1 kHz (20 points per cycle) with times: "UA" 100 V peak, "IA" 5 A peak
// lagging by 30 degrees.
class ExprTest : public PhasorSwitchesRestored
{
protected:
    ExprTest() : r({{1000.0f, 400}})
    {
        ua = &r.add(Sine(400, 1000.0, 100.0));
        ia = &r.add(Sine(400, 1000.0, 5.0, -30.0), "A");
        ia->config->ch_id = "IA";
        SetSampleTimes(r.file);
    }

    // The message texts of compiling `script`.
    QStringList messages(const QString &script)
    {
        program.Compile(r.file, script);
        QStringList texts;
        for (const auto &m : ExpMessages)
            texts << m.second;
        return texts;
    }

    // The log of running `script`.
    QStringList run(const QString &script)
    {
        program.Compile(r.file, script);
        if (ExpMessages.empty())
            program.Evaluate();
        QStringList lines;
        for (const ExpLogLine &line : program.TakeResults())
            lines << line.text;
        return lines;
    }

    // The samples of the virtual channel that `"R" = expression` makes.
    std::vector<float> curve(const QString &expression)
    {
        const QStringList log = run("\"R\" = " + expression);
        EXPECT_EQ(log.value(1), "[R] Out a new Virtual Channel [R]!") << log.join('\n').toStdString();
        const CChnMapAnalog *chn = channel("R");
        if (!chn)
            return {};
        return std::vector<float>(chn->Values(), chn->Values() + chn->sampleCount);
    }

    CChnMapAnalog *channel(const char *name) const
    {
        return dynamic_cast<CChnMapAnalog *>(r.file.FindMapByName(name));
    }

    MemoryRecording r;
    CChnMapAnalog *ua = nullptr;
    CChnMapAnalog *ia = nullptr;
    CExpAnaMulti program;
};
