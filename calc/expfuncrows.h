#pragma once

// The rows of the function library as data, shared by the table (expfunctions.cpp) and the
// run-mode computations (expfuncrun.cpp): what each row accepts, what it gives, and which
// computation with which variant runs it.

class CCmtd99File;
class ExpValue;
struct ExpNode;

// The computations behind the rows; `variant` picks within one.
enum class ExpFamily
{
    Math, // variant: ExpMathFn
    Atan2,
    Complex,     // complex(r, x)
    ComplexPart, // variant: 0 real, 1 imaginary, 2 modulus, 3 angle in degrees
    Harmonic,    // variant: PhasorPart
    Curve,       // variant: ChannelCurve
    Delta,       // variant: DeltaMode
    Dist,
    Avg,
    Dtms,
    Freq, // variant: 0 zero crossing, 1 DFT insert
    Hamming,
    Diff,
    Sequence,        // variant: PhasorPart
    Power,           // variant: PowerPart
    Impedance,       // variant: PhasorPart
    GroundImpedance, // variant: PhasorPart
    SineWave,
    StepWave,
    DecayWave,
    Splice,
    PhaseDiff
};

enum ExpMathFn
{
    MathSin,
    MathCos,
    MathTan,
    MathCtg,
    MathAtan,
    MathSqrt,
    MathAbs,
    MathExp,
    MathLog,
    MathLog10,
    MathToArc,
    MathToAng
};

// The type a row gives at compile time.
enum class ExpResult
{
    SameAsFirst, // that of the first argument
    Constant,
    Complex,
    Channel
};

struct ExpRowSpec
{
    const char *name;
    const char *args;
    const char *title;
    const char *help;
    int group;
    int minArgs;
    int maxArgs; // -1: any number
    // One letter per argument, the last one repeated: k constant, c channel, x complex,
    // n constant or channel, a any of the three.
    const char *types;
    ExpResult result;
    ExpFamily family;
    int variant;
};

// Run mode of a row: evaluates the arguments of `node` and builds the result into `out`.
void RunExpRow(const ExpRowSpec &row, CCmtd99File &file, ExpNode &node, ExpValue &out);
