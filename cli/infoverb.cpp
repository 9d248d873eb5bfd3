#include "infoverb.h"

#include "cmtd99file.h"
#include "cmtdtext.h"
#include "extfile.h"
#include "jsonwriter.h"
#include "notices.h"
#include "pathmap.h"
#include "recordingload.h"
#include "unitsjson.h"

#include <QFileInfo>

#include <cstdio>
#include <cstring>

namespace {

QByteArray stampText(const RecordTime &t)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02d.%06d", t.year, t.month, t.day, t.hour,
                  t.minute, t.second, t.microsecond);
    return buffer;
}

void writeMessages(JsonWriter &json, const CCmtd99File &file, const char *name,
                   const LoadMessageList &messages, const QByteArray &source = QByteArray())
{
    json.key(name);
    json.beginArray();
    for (const LoadMessage &message : messages) {
        json.beginObject();
        if (!source.isEmpty()) {
            json.field("file", QString::fromLocal8Bit(source));
        }
        json.field("line", message.line);
        json.field("text", file.Text(message.text));
        json.endObject();
    }
    json.endArray();
}

void writeText(JsonWriter &json, const CCmtd99File &file, const char *name, const QByteArray &bytes)
{
    json.key(name);
    json.value(file.Text(bytes));
}

void printPlain(const char *path, const CCmtd99File &file, bool loadOk)
{
    const CmtdFileDescription &d = file.fileDesc;
    std::printf("file:      %s\n", path);
    std::printf("usable:    %s (validation mask %d)\n", loadOk ? "yes" : "no", file.validationMask);
    std::printf("encoding:  %s\n", file.codecName.constData());
    std::printf("station:   %s\n", file.Text(d.stationName).toUtf8().constData());
    std::printf("device:    %s\n", file.Text(d.recDevId).toUtf8().constData());
    std::printf("revision:  %s\n", d.revYear.constData());
    std::printf("channels:  %d (%dA, %dD), line frequency %g Hz\n", d.totalChannels, d.analogCount,
                d.statusCount, double(d.lineFreq));
    std::printf("start:     %s\n", stampText(d.startTime).constData());
    std::printf("trigger:   %s\n", stampText(d.triggerTime).constData());
    std::printf("samples:   %d promised, %d loaded, in %d segment(s); trigger at sample %d\n",
                file.pointCount, file.loadedPoints, int(file.segments.size()), file.triggerIndex);
    for (const SampleSegment &s : file.segments)
        std::printf("           %d: %g Hz, samples %d..%d\n", s.index, double(s.rate), s.start, s.end - 1);
    std::printf("data type: %s, time multiplier %g\n", d.fileType.constData(), double(d.timeMult));
    for (const auto &c : file.analogChannels) {
        std::printf("  A%-4d %-24s %-3s %-6s a=%g b=%g\n", c->index, file.Text(c->ch_id).toUtf8().constData(),
                    c->ph.constData(), file.Text(c->uu).toUtf8().constData(), double(c->a), double(c->b));
    }
    for (const auto &c : file.statusChannels)
        std::printf("  D%-4d %-24s y=%d\n", c->index, file.Text(c->ch_id).toUtf8().constData(),
                    c->normalState);
    for (const QString &notice : RecordingNotices(file))
        std::printf("notice:    %s\n", notice.toUtf8().constData());
    const struct
    {
        const char *name;
        const LoadMessageList &list;
    } sources[] = {{"cfg", file.cfgMessages},
                   {"inf", file.infMessages},
                   {"ext", file.extMessages},
                   {"dat", file.datMessages}};
    for (const auto &source : sources) {
        for (const LoadMessage &m : source.list)
            std::printf("%s:%d: %s\n", source.name, m.line, file.Text(m.text).toUtf8().constData());
    }
}

} // namespace

namespace {

void writeRecordingJson(JsonWriter &json, const char *path, const CCmtd99File &file, bool loadOk)
{
    const CmtdFileDescription &d = file.fileDesc;
    json.field("file", QString::fromLocal8Bit(path));
    json.field("loadOk", loadOk);
    json.field("validationMask", file.validationMask);
    json.field("encoding", file.codecName.constData());
    writeText(json, file, "station", d.stationName);
    writeText(json, file, "device", d.recDevId);
    writeText(json, file, "revYear", d.revYear);
    json.fieldFloat("lineFreq", d.lineFreq);
    json.field("totalChannels", int(d.totalChannels));
    json.field("analogCount", int(d.analogCount));
    json.field("statusCount", int(d.statusCount));
    json.field("rateCount", int(d.rateCount));
}

// The segments as the ".cfg" wrote them (no start) or as the loader made them.
void writeSegmentsJson(JsonWriter &json, const char *name, const std::vector<SampleSegment> &segments,
                       bool withStart)
{
    json.key(name);
    json.beginArray();
    for (const SampleSegment &s : segments) {
        json.beginObject();
        json.field("index", int(s.index));
        json.fieldFloat("rate", s.rate);
        if (withStart) {
            json.field("start", s.start);
        }
        json.field("end", s.end);
        json.endObject();
    }
    json.endArray();
}

void writeTimingJson(JsonWriter &json, const CCmtd99File &file)
{
    const CmtdFileDescription &d = file.fileDesc;
    json.field("pointCount", file.pointCount);
    json.field("loadedPoints", file.loadedPoints);
    json.field("triggerIndex", file.triggerIndex);
    json.field("startTime", stampText(d.startTime).constData());
    json.field("triggerTime", stampText(d.triggerTime).constData());
    writeText(json, file, "fileType", d.fileType);
    json.fieldFloat("timeMult", d.timeMult);
}

void writeAnalogJson(JsonWriter &json, const CCmtd99File &file)
{
    json.key("analog");
    json.beginArray();
    for (const auto &c : file.analogChannels) {
        json.beginObject();
        json.field("index", int(c->index));
        writeText(json, file, "id", c->ch_id);
        writeText(json, file, "ph", c->ph);
        writeText(json, file, "ccbm", c->ccbm);
        writeText(json, file, "uu", c->uu);
        json.fieldFloat("a", c->a);
        json.fieldFloat("b", c->b);
        json.fieldFloat("skew", c->skew);
        json.fieldFloat("min", c->min);
        json.fieldFloat("max", c->max);
        json.fieldFloat("primary", c->primary);
        json.fieldFloat("secondary", c->secondary);
        const char ps[2] = {c->ps, 0};
        json.field("ps", ps);
        json.field("flags", static_cast<long long>(c->flags));
        if (const CChnMapAnalog *map = file.FindAnalogMap(c->index)) {
            json.field("class", int(map->Class()));
            json.field("phase", int(map->Phase()));
            json.fieldFloat("ratedFreq", c->ratedFreq);
            json.fieldFloat("valueMax", map->maxValue);
            json.fieldFloat("valueMin", map->minValue);
        }
        json.endObject();
    }
    json.endArray();
}

void writeStatusJson(JsonWriter &json, const CCmtd99File &file)
{
    json.key("status");
    json.beginArray();
    for (const auto &c : file.statusChannels) {
        json.beginObject();
        json.field("index", int(c->index));
        writeText(json, file, "id", c->ch_id);
        writeText(json, file, "ph", c->ph);
        writeText(json, file, "ccbm", c->ccbm);
        json.field("y", int(c->normalState));
        json.field("flags", static_cast<long long>(c->flags));
        if (const CChnMapStatus *map = file.FindStatusMap(c->index)) {
            json.field("changed", (map->flags & CChnMapBase::FlagShifts) != 0);
        }
        json.endObject();
    }
    json.endArray();
}

void writeKeysJson(JsonWriter &json, const CCmtd99File &file, const InfKeyValueList &keys)
{
    json.key("otherKeys");
    json.beginObject();
    for (const InfKeyValue &entry : keys) {
        json.key(entry.key.constData());
        json.value(file.Text(entry.value));
    }
    json.endObject();
}

void writeRecordInfoJson(JsonWriter &json, const CCmtd99File &file)
{
    const InfRecordInfo &info = file.recordInfo;
    json.field("infVersion", int(file.infVersion));
    json.key("recordInfo");
    json.beginObject();
    json.field("flags", info.flags);
    writeText(json, file, "source", info.source);
    writeText(json, file, "versionTag", info.versionTag);
    writeText(json, file, "recordInfo", info.recordInfo);
    writeText(json, file, "location", info.location);
    json.fieldFloat("maxCurrent", info.maxCurrent);
    json.fieldFloat("minCurrent", info.minCurrent);
    json.fieldFloat("maxVoltage", info.maxVoltage);
    json.fieldFloat("minVoltage", info.minVoltage);
    json.field("eventNoteCount", info.eventNoteCount);
    writeKeysJson(json, file, info.otherKeys);
    json.endObject();
}

void writeInfRecordsJson(JsonWriter &json, const CCmtd99File &file)
{
    json.key("statusEvents");
    json.beginArray();
    for (const InfStatusEvent &e : file.statusEvents) {
        json.beginObject();
        json.field("flags", e.flags);
        json.field("channelIndex", int(e.channelIndex));
        writeText(json, file, "channelName", e.channelName);
        writeText(json, file, "status", e.status);
        json.field("tripPoint", e.tripPoint);
        json.field("tripTimeMs", e.tripTimeMs);
        json.field("tripTimeFrac", e.tripTimeFrac);
        json.endObject();
    }
    json.endArray();
    json.key("commentaries");
    json.beginArray();
    for (const InfCommentary &c : file.commentaries) {
        json.beginObject();
        json.key("channelType");
        const char type[2] = {static_cast<char>(c.channelType), 0};
        json.value(type);
        json.field("channelIndex", int(c.channelIndex));
        json.field("sampleIndex", c.sampleIndex);
        json.field("posX", c.posX);
        json.field("posY", c.posY);
        writeText(json, file, "text", c.text);
        json.endObject();
    }
    json.endArray();
    json.key("expressionLines");
    json.beginArray();
    for (const QByteArray &line : file.expressionLines)
        json.value(file.Text(line));
    json.endArray();
    json.field("customT0", file.customT0);
    json.key("rawSections");
    json.beginArray();
    for (const InfRawSection &section : file.foreignSections)
        json.value(file.Text(section.head));
    json.endArray();
}

void writeMessagesJson(JsonWriter &json, const char *path, const CCmtd99File &file)
{
    json.key("messages");
    json.beginObject();
    writeMessages(json, file, "cfg", file.cfgMessages);
    const QByteArray infPath =
        file.cffPath.isEmpty() ? CmtdSiblingPath(CmtdBasePath(path), ".inf") : file.cffPath;
    writeMessages(json, file, "inf", file.infMessages, infPath);
    writeMessages(json, file, "ext", file.extMessages);
    writeMessages(json, file, "dat", file.datMessages);
    json.endObject();
    json.key("notices");
    json.beginArray();
    for (const QString &notice : RecordingNotices(file))
        json.value(notice);
    json.endArray();
}

// What the older ".ext" gave: its messages and the names of the line units it made.
void writeExtJson(JsonWriter &json, const CCmtd99File &file)
{
    writeMessages(json, file, "extMessages", file.extMessages);
    json.key("extUnits");
    json.beginArray();
    const int made = ExtMadeUnitCount(file);
    for (int i = 0; i < made; ++i)
        json.value(file.Text(file.lineUnits[size_t(i)]->name));
    json.endArray();
}

void writePathMapJson(JsonWriter &json, const PathMapEntry *entry)
{
    json.key("pathMapEntry");
    if (!entry) {
        json.null();
        return;
    }
    json.beginObject();
    json.field("rootPath", QString::fromLocal8Bit(entry->rootPath));
    json.field("settingsFile", QString::fromLocal8Bit(entry->settingsFile));
    json.field("groupFile", QString::fromLocal8Bit(entry->groupFile));
    json.endObject();
}

} // namespace

void WriteDescriptionJson(JsonWriter &json, const char *path, const CCmtd99File &file, bool loadOk)
{
    writeRecordingJson(json, path, file, loadOk);
    writeSegmentsJson(json, "rawSegments", file.fileDesc.rawSegments, false);
    writeSegmentsJson(json, "segments", file.segments, true);
    writeTimingJson(json, file);
    writeAnalogJson(json, file);
    writeStatusJson(json, file);
    writeRecordInfoJson(json, file);
    writeInfRecordsJson(json, file);
    writeMessagesJson(json, path, file);
    WriteUnitsJson(json, file);
}

int RunInfo(int argc, char **argv)
{
    bool asJson = false;
    bool progress = false;
    const char *encoding = nullptr;
    const char *mapPath = nullptr;
    const char *path = nullptr;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--json") == 0) {
            asJson = true;
        } else if (std::strcmp(argv[i], "--progress") == 0) {
            progress = true;
        } else if (std::strcmp(argv[i], "--encoding") == 0 && i + 1 < argc) {
            encoding = argv[++i];
        } else if (std::strcmp(argv[i], "--settings-map") == 0 && i + 1 < argc) {
            mapPath = argv[++i];
        } else if (argv[i][0] == '-' && argv[i][1] == '-') {
            std::fprintf(stderr, "veldrix-cli info: unknown option %s\n", argv[i]);
            return 2;
        } else if (!path) {
            path = argv[i];
        } else {
            std::fprintf(stderr, "veldrix-cli info: more than one recording named\n");
            return 2;
        }
    }
    if (!path) {
        std::fprintf(
            stderr,
            "usage: veldrix-cli info [--json] [--progress] [--encoding NAME] [--settings-map FILE] PATH\n");
        return 2;
    }

    CCmtd99File file;
    if (encoding)
        file.codecOverride = encoding;
    // The path map applies to the recording as the program opens it: by its full path, before
    // the samples are read.
    const PathMapEntry *mapEntry = nullptr;
    if (mapPath)
        LoadPathMapFrom(QByteArray(mapPath));
    const auto applyMap = [&mapEntry, mapPath, path](CCmtd99File &loaded) {
        if (!mapPath)
            return;
        const QByteArray full = QFileInfo(QString::fromLocal8Bit(path)).absoluteFilePath().toLocal8Bit();
        mapEntry = findPathMapEntry(full.constData());
        if (mapEntry)
            ApplyPathMapEntry(loaded, *mapEntry);
    };
    const LoadOutcome outcome = LoadRecording("info", path, file, true, progress, applyMap);
    if (outcome == LoadOutcome::Missing)
        return 2;
    const bool usable = outcome == LoadOutcome::Usable;
    if (asJson) {
        JsonWriter json;
        json.beginObject();
        WriteDescriptionJson(json, path, file, usable);
        writeExtJson(json, file);
        if (mapPath)
            writePathMapJson(json, mapEntry);
        json.endObject();
        std::fwrite(json.text().data(), 1, json.text().size(), stdout);
        std::fputc('\n', stdout);
    } else {
        printPlain(path, file, usable);
        if (mapPath)
            std::printf("path map:  %s\n", mapEntry ? mapEntry->rootPath.constData() : "(no entry)");
    }
    return ExitCodeOf(outcome);
}
