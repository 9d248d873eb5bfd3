#include "unitsverb.h"

#include "cmtd99file.h"
#include "jsonwriter.h"
#include "recordingload.h"
#include "unitsjson.h"
#include "unitsuggest.h"

#include <cstdio>
#include <cstring>
#include <vector>

namespace {

void usage()
{
    std::fprintf(stderr, "usage: veldrix-cli units --json PATH [--suggest]\n");
}

// Moves the proposals into the recording's lists, where the units JSON finds them, and writes
// the reason of each, in the order they were proposed.
void addSuggestions(CCmtd99File &file, JsonWriter &json)
{
    std::vector<UnitSuggestion> suggestions = SuggestUnits(file);
    struct Reason
    {
        int kind;
        QString name;
        QString text;
    };
    std::vector<Reason> reasons;
    for (UnitSuggestion &s : suggestions) {
        reasons.push_back(Reason{int(s.kind), file.Text(s.unit->name), s.reason});
        if (s.kind == CmtdInfTrwk_Unit::KindTransformer)
            file.transformerUnits.emplace_back(static_cast<CmtdInfTrwk_UnitTrm *>(s.unit.release()));
        else
            file.lineUnits.emplace_back(static_cast<CmtdInfTrwk_UnitLine *>(s.unit.release()));
    }
    WriteUnitsJson(json, file);
    json.key("reasons");
    json.beginArray();
    for (const Reason &reason : reasons) {
        json.beginObject();
        json.field("kind", reason.kind);
        json.field("name", reason.name);
        json.field("reason", reason.text);
        json.endObject();
    }
    json.endArray();
}

} // namespace

int RunUnits(int argc, char **argv)
{
    bool suggest = false;
    const char *path = nullptr;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--json") == 0) {
            continue; // the only output form
        } else if (std::strcmp(argv[i], "--suggest") == 0) {
            suggest = true;
        } else if (argv[i][0] == '-' && argv[i][1] == '-') {
            std::fprintf(stderr, "veldrix-cli units: unknown option %s\n", argv[i]);
            return 2;
        } else if (!path) {
            path = argv[i];
        } else {
            usage();
            return 2;
        }
    }
    if (!path) {
        usage();
        return 2;
    }
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("units", path, file, false, false);
    if (outcome == LoadOutcome::Missing)
        return 2;

    JsonWriter json;
    json.beginObject();
    if (suggest)
        addSuggestions(file, json);
    else
        WriteUnitsJson(json, file);
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return ExitCodeOf(outcome);
}
