// Evaluation of the expression trees. An operator works in place in one of its operands, the
// accumulator, which becomes the result: a channel operand is always the accumulator, so that
// the result channel takes its description (unit, ratios, rated frequency) from it, and an
// expression of k operators makes no array beyond one copy per channel operand.

#include "chnmap.h"
#include "cmtd99file.h"
#include "expanamulti.h"
#include "expfunctions.h"

#include <algorithm>
#include <cmath>

namespace {

double numberOf(const ExpValue &v)
{
    return v.isConstant() ? v.value : 0.0;
}

double applyNumbers(char op, double a, double b)
{
    switch (op) {
    case '+':
        return a + b;
    case '-':
        return a - b;
    case '*':
        return a * b;
    case '/':
        return a / b;
    default:
        return std::pow(a, b);
    }
}

void applyComplex(char op, ComplexD &acc, const ComplexD &other)
{
    switch (op) {
    case '+':
        acc = acc + other;
        break;
    case '-':
        acc = acc + other.scaled(-1.0);
        break;
    case '*':
        acc.multiply(other);
        break;
    case '/':
        acc.divide(other);
        break;
    default:
        break; // refused when compiled
    }
}

// A number with the complex accumulator; `accIsLeft` tells the source order.
void applyComplexNumber(char op, ComplexD &acc, double number, bool accIsLeft)
{
    switch (op) {
    case '+':
        acc.re += number;
        break;
    case '-':
        if (accIsLeft) {
            acc.re -= number;
        } else {
            acc.re = number - acc.re;
            acc.im = -acc.im;
        }
        break;
    case '*':
        acc.re *= number;
        acc.im *= number;
        break;
    case '/':
        if (accIsLeft) {
            acc.re /= number;
            acc.im /= number;
        } else {
            ComplexD quotient{number, 0.0};
            quotient.divide(acc);
            acc = quotient;
        }
        break;
    default:
        break;
    }
}

// x[i] = x[i] op v (or v op x[i] when the number stood on the left), in 32-bit floats.
void applySamplesNumber(char op, float *x, int total, float v, bool accIsLeft)
{
    switch (op) {
    case '+':
        for (int i = 0; i < total; ++i)
            x[i] = x[i] + v;
        break;
    case '-':
        for (int i = 0; i < total; ++i)
            x[i] = accIsLeft ? x[i] - v : v - x[i];
        break;
    case '*':
        for (int i = 0; i < total; ++i)
            x[i] = x[i] * v;
        break;
    case '/':
        for (int i = 0; i < total; ++i)
            x[i] = accIsLeft ? x[i] / v : v / x[i];
        break;
    default:
        for (int i = 0; i < total; ++i)
            x[i] = static_cast<float>(accIsLeft ? std::pow(double(x[i]), double(v))
                                                : std::pow(double(v), double(x[i])));
        break;
    }
}

// x[i] = x[i] op y[i] (or y[i] op x[i]), in 32-bit floats.
void applySamples(char op, float *x, const float *y, int total, bool accIsLeft)
{
    switch (op) {
    case '+':
        for (int i = 0; i < total; ++i)
            x[i] = x[i] + y[i];
        break;
    case '-':
        for (int i = 0; i < total; ++i)
            x[i] = accIsLeft ? x[i] - y[i] : y[i] - x[i];
        break;
    case '*':
        for (int i = 0; i < total; ++i)
            x[i] = x[i] * y[i];
        break;
    case '/':
        for (int i = 0; i < total; ++i)
            x[i] = accIsLeft ? x[i] / y[i] : y[i] / x[i];
        break;
    default:
        for (int i = 0; i < total; ++i)
            x[i] = static_cast<float>(accIsLeft ? std::pow(double(x[i]), double(y[i]))
                                                : std::pow(double(y[i]), double(x[i])));
        break;
    }
}

void applyChannel(const CCmtd99File &file, char op, ExpValue &acc, const ExpValue &other, bool accIsLeft)
{
    float *x = acc.channel ? acc.channel->Values() : nullptr;
    if (!x)
        return;
    int total = std::min(std::max(file.loadedPoints, 0), acc.channel->sampleCount);
    if (other.isChannel()) {
        const float *y = other.channel ? other.channel->Values() : nullptr;
        if (!y)
            return;
        total = std::min(total, other.channel->sampleCount);
        applySamples(op, x, y, total, accIsLeft);
    } else if (other.type != ExpTypeComplex) {
        // A complex number on the left of a channel leaves the channel as it is.
        applySamplesNumber(op, x, total, static_cast<float>(numberOf(other)), accIsLeft);
    }
}

bool evalOperator(CCmtd99File &file, ExpNode &node, ExpValue &out)
{
    out.clear();
    if (!node.left || !node.right)
        return true;
    ExpValue l;
    ExpValue r;
    if (!EvalNode(file, *node.left, l) || !EvalNode(file, *node.right, r))
        return false;
    const bool accIsLeft =
        l.isChannel() || (!r.isChannel() && (l.type == ExpTypeComplex || r.type != ExpTypeComplex));
    ExpValue &acc = accIsLeft ? l : r;
    const ExpValue &other = accIsLeft ? r : l;
    if (!TakeValue(acc, out))
        return false;
    if (out.isChannel()) {
        applyChannel(file, node.op, out, other, accIsLeft);
    } else if (out.type == ExpTypeComplex) {
        if (other.type == ExpTypeComplex)
            applyComplex(node.op, out.complex, other.complex);
        else
            applyComplexNumber(node.op, out.complex, numberOf(other), accIsLeft);
    } else {
        const double a = numberOf(accIsLeft ? out : other);
        const double b = numberOf(accIsLeft ? other : out);
        out.setConstant(applyNumbers(node.op, a, b));
    }
    return true;
}

} // namespace

bool EvalNode(CCmtd99File &file, ExpNode &node, ExpValue &out)
{
    switch (node.kind) {
    case ExpNodeOperator:
        return evalOperator(file, node, out);
    case ExpNodeFunction:
        out.clear();
        if (node.func && node.func->handler)
            node.func->handler(file, node, &out);
        return !ExpMemoryFault();
    case ExpNodeSysConstant:
    case ExpNodeNumber:
        out.setConstant(node.value);
        return true;
    case ExpNodeChannel:
        out.setChannelRef(node.channel);
        return true;
    case ExpNodeVariable:
        // Value semantics: a channel held by a variable is copied at each use.
        if (node.variable)
            return CopyValue(node.variable->value, out);
        out.clear();
        return true;
    default:
        out.clear();
        return true;
    }
}
