// veldrix-cli: the recording engine without a window, for scripts and for checking what the
// program reads from a recording.

#include "infoverb.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstring>

namespace {

void printUsage(FILE *out)
{
    std::fprintf(out, "usage: veldrix-cli <verb> [options]\n"
                      "verbs:\n"
                      "  info [--json] PATH   describe a recording (PATH may carry any extension)\n");
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        printUsage(stderr);
        return 2;
    }
    const char *verb = argv[1];
    if (std::strcmp(verb, "info") == 0)
        return RunInfo(argc - 2, argv + 2);
    if (std::strcmp(verb, "--help") == 0 || std::strcmp(verb, "help") == 0) {
        printUsage(stdout);
        return 0;
    }
    std::fprintf(stderr, "veldrix-cli: unknown verb \"%s\"\n", verb);
    printUsage(stderr);
    return 2;
}
