#include "evalverb.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "expanamulti.h"
#include "expfunctions.h"
#include "jsonwriter.h"
#include "recordingload.h"

#include <QFile>

#include <cstdio>
#include <cstring>

namespace {

void usage()
{
    std::fprintf(stderr, "usage: veldrix-cli eval --json PATH (--script TEXT | --script-file F)\n");
}

struct EvalOptions
{
    const char *path = nullptr;
    const char *script = nullptr;
    const char *scriptFile = nullptr;
};

// -1 when the options are whole, else the exit status of a usage error.
int readOptions(int argc, char **argv, EvalOptions &o)
{
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        if (std::strcmp(arg, "--json") == 0) {
            continue; // the only output form
        } else if (std::strcmp(arg, "--script") == 0 && i + 1 < argc) {
            o.script = argv[++i];
        } else if (std::strcmp(arg, "--script-file") == 0 && i + 1 < argc) {
            o.scriptFile = argv[++i];
        } else if (arg[0] == '-' && arg[1] == '-') {
            std::fprintf(stderr, "veldrix-cli eval: unknown or incomplete option %s\n", arg);
            return 2;
        } else if (!o.path) {
            o.path = arg;
        } else {
            usage();
            return 2;
        }
    }
    if (!o.path || (o.script != nullptr) == (o.scriptFile != nullptr)) {
        usage();
        return 2;
    }
    return -1;
}

void writeResult(const CCmtd99File &file, const std::vector<ExpLogLine> &log)
{
    JsonWriter json;
    json.beginObject();
    json.key("messages");
    json.beginArray();
    for (const auto &message : ExpMessages) {
        json.beginObject();
        json.field("pos", message.first);
        json.field("text", message.second);
        json.endObject();
    }
    json.endArray();
    json.key("log");
    json.beginArray();
    for (const ExpLogLine &line : log)
        json.value(line.text);
    json.endArray();
    json.key("channels");
    json.beginArray();
    for (const ExpLogLine &line : log) {
        if (!line.channel)
            continue;
        const CChnMapAnalog &chn = *line.channel;
        json.beginObject();
        json.field("name", file.Text(chn.Name()));
        json.field("unit", file.Text(chn.config ? chn.config->uu : QByteArray()));
        json.key("values");
        json.beginArray();
        const int count = std::min(chn.sampleCount, std::max(file.loadedPoints, 0));
        for (int i = 0; i < count; ++i)
            json.valueFloat(chn.Values()[i]);
        json.endArray();
        json.endObject();
    }
    json.endArray();
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
}

} // namespace

int RunEval(int argc, char **argv)
{
    EvalOptions o;
    if (const int code = readOptions(argc, argv, o); code >= 0)
        return code;
    QString script;
    if (o.scriptFile) {
        QFile in(QString::fromLocal8Bit(o.scriptFile));
        if (!in.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "veldrix-cli eval: cannot read the script %s\n", o.scriptFile);
            return 2;
        }
        script = QString::fromUtf8(in.readAll());
    } else {
        script = QString::fromLocal8Bit(o.script);
    }
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("eval", o.path, file, true, false);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    FillExpFunctionTable();
    CExpAnaMulti program;
    program.Compile(file, script);
    // Any message, a warning too, keeps the script from running.
    const bool runs = ExpMessages.empty();
    if (runs)
        program.Evaluate();
    writeResult(file, program.TakeResults());
    return runs && ExpMessages.empty() ? 0 : 1;
}
