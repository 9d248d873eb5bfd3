// veldrix-cli: the recording engine without a window, for scripts and for checking what the
// program reads from a recording.

#include "combineverb.h"
#include "convertverb.h"
#include "cutverb.h"
#include "deriveverb.h"
#include "differentialverb.h"
#include "evalverb.h"
#include "eventsverb.h"
#include "generatorverb.h"
#include "harmonicsverb.h"
#include "impedanceverb.h"
#include "infoverb.h"
#include "locateverb.h"
#include "phasorsverb.h"
#include "powerverb.h"
#include "samplesverb.h"
#include "saveinfverb.h"
#include "sequencesverb.h"
#include "unitsverb.h"
#include "zonesverb.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstring>

namespace {

void printUsage(FILE *out)
{
    std::fprintf(
        out,
        "usage: veldrix-cli <verb> [options]\n"
        "verbs:\n"
        "  info [--json] [--progress] [--encoding NAME] PATH\n"
        "      describe a recording (PATH may carry any extension) and load its samples\n"
        "  samples --json PATH [--from N] [--to M] [--channel A<n>|D<n>]... [--progress]\n"
        "      the samples as stored: times in microseconds from the trigger, analog values\n"
        "      scaled to secondary quantities without unit prefix, status bits\n"
        "  phasors --json PATH --at SAMPLE [--dft-method rectSin|rectCos|trapSin|trapCos]\n"
        "          [--dft-win prev|cent|next] [--phcomp] [--primary]\n"
        "      fundamental phasor, effective values and read-out of every analog channel\n"
        "  sequences --json PATH --channels A<n>,A<n>,A<n> --at SAMPLE\n"
        "      positive, negative and zero sequence of three phases at a sample\n"
        "  harmonics --json PATH --channel A<n> --at SAMPLE [--max-order K]\n"
        "      harmonic content of a channel at a sample, with THD and DC share\n"
        "  convert PATH OUT [--ascii|--binary|--binary32|--float32] [--revision 1991|1999|2013]\n"
        "          [--progress]\n"
        "      write an exact copy of the recording under a new name ending in .cfg or .cff\n"
        "  save-inf PATH OUT.inf\n"
        "      write the recording's extension file alone\n"
        "  units --json PATH [--suggest]\n"
        "      the primary device units as stored; with --suggest also those proposed from the\n"
        "      channel names and monitored components, with the reason for each\n"
        "  derive --json PATH --channel A<n> --job delta --mode 0|1|2 | --job avg\n"
        "          | --job harm --order K --part 0|1|2 | --job hamming --end-freq F --length L\n"
        "          | --job diff | --job freq-x0 | --job freq-dft\n"
        "      the curve of a virtual channel derived from one channel: name, unit, rated\n"
        "      frequency and one value per sample\n"
        "  locate --json --line LENGTH,R1,X1,C1[,R0,X0] --m PATH --m-channels UA,UB,UC,IA,IB,IC\n"
        "         [--m-channels2 IA2,IB2,IC2] [--m-weights W1,W2] --m-tv PRIMARY_KV,SECONDARY_V\n"
        "         --m-ta PRIMARY_A,SECONDARY_A [--m-kf KF] [--m-start SAMPLE] --n PATH ... (the same\n"
        "         with --n-)\n"
        "      distance to a short circuit from the recordings of both line ends; exit 1 when the\n"
        "      location fails (its code and report are printed)\n"
        "  events --json PATH [--base t0|t0c|SAMPLE] [--format mmssus|msus]\n"
        "      every change of state of the status channels in time order, with its delta time\n"
        "  impedance --json PATH --kind 0|1|2|3 --u A1,A2,A3 --i A4,A5,A6 [--i2 ...] [--i3 ...]\n"
        "            [--coef 1,1,1] [--line R1,X1,R0,X0] [--r An --x An] (--at SAMPLE | --from N --to M)\n"
        "      apparent impedance of the phase loops at a sample, or its traces over a range\n"
        "  differential --json PATH --unit NAME [--mode 1..4] [--bounds FILE.tdb]\n"
        "               (--at SAMPLE | --from N --to M)\n"
        "      differential and braking currents of a transformer or generator per phase, with the\n"
        "      harmonic ratios and whether the point trips the characteristic, or their traces\n"
        "  zones --json FILE.tzb [--inside R,X]\n"
        "      an impedance boundary file as read, and which of its zones hold a point\n"
        "  power --json PATH --u A1,A2,A3 --i A4,A5,A6 [--primary] [--from N --to M]\n"
        "      total active, reactive and apparent power of three phases at every sample\n"
        "  cut PATH OUT --from N --to M [--channels A1,A2,D1...] [--max-rate HZ] [--ascii|--binary|--csv]\n"
        "      samples N..M of the chosen channels as a new recording (each rate above HZ thinned) or a\n"
        "      .csv table; the new recording keeps the plant units of its channels\n"
        "  combine OUT --base PATH --from N --to M [--channels ...] --other PATH --align OTHER:BASE\n"
        "          [--method 0..4] [--channels ...] [--other ...] [--ascii]\n"
        "      recordings of one event on the time axis of the base's range: each other file's channels\n"
        "      resampled at its align point (0 Hermite, 1 Lagrange parabola, 2 Newton, 3 line, 4 carry)\n"
        "  eval --json PATH (--script TEXT | --script-file F)\n"
        "      compile and run an expression script: its messages, its result log and the samples of\n"
        "      each new virtual channel; a script with any message does not run (exit 1)\n"
        "  generator --json PATH --unit NAME --analysis exci|step|pq [--bounds FILE]\n"
        "            (--at SAMPLE | --from N --to M)\n"
        "      loss of excitation, pole slip or capability of a generator unit: the table rows at a\n"
        "      sample, or the per-unit trajectory (and the slip counts) over a range\n");
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
    if (std::strcmp(verb, "samples") == 0)
        return RunSamples(argc - 2, argv + 2);
    if (std::strcmp(verb, "phasors") == 0)
        return RunPhasors(argc - 2, argv + 2);
    if (std::strcmp(verb, "harmonics") == 0)
        return RunHarmonics(argc - 2, argv + 2);
    if (std::strcmp(verb, "sequences") == 0)
        return RunSequences(argc - 2, argv + 2);
    if (std::strcmp(verb, "convert") == 0)
        return RunConvert(argc - 2, argv + 2);
    if (std::strcmp(verb, "save-inf") == 0)
        return RunSaveInf(argc - 2, argv + 2);
    if (std::strcmp(verb, "units") == 0)
        return RunUnits(argc - 2, argv + 2);
    if (std::strcmp(verb, "derive") == 0)
        return RunDerive(argc - 2, argv + 2);
    if (std::strcmp(verb, "locate") == 0)
        return RunLocate(argc - 2, argv + 2);
    if (std::strcmp(verb, "events") == 0)
        return RunEvents(argc - 2, argv + 2);
    if (std::strcmp(verb, "impedance") == 0)
        return RunImpedance(argc - 2, argv + 2);
    if (std::strcmp(verb, "differential") == 0)
        return RunDifferential(argc - 2, argv + 2);
    if (std::strcmp(verb, "zones") == 0)
        return RunZones(argc - 2, argv + 2);
    if (std::strcmp(verb, "power") == 0)
        return RunPower(argc - 2, argv + 2);
    if (std::strcmp(verb, "combine") == 0)
        return RunCombine(argc - 2, argv + 2);
    if (std::strcmp(verb, "cut") == 0)
        return RunCut(argc - 2, argv + 2);
    if (std::strcmp(verb, "eval") == 0)
        return RunEval(argc - 2, argv + 2);
    if (std::strcmp(verb, "generator") == 0)
        return RunGenerator(argc - 2, argv + 2);
    if (std::strcmp(verb, "--help") == 0 || std::strcmp(verb, "help") == 0) {
        printUsage(stdout);
        return 0;
    }
    std::fprintf(stderr, "veldrix-cli: unknown verb \"%s\"\n", verb);
    printUsage(stderr);
    return 2;
}
