#pragma once

// The function library of the expression language: 63 functions in twelve groups, which the
// parser calls by name and the expression form lists with their argument forms and help. The
// table is filled once at start-up (after the language is chosen, since titles and help are
// translated) and only read afterwards. Each row's handler checks its arguments when the
// parser has built them (compile mode, no `out`) and computes the result when the script runs
// (run mode): the channel functions copy their first channel and write a derived curve into it.

#include <QString>

#include <string_view>
#include <vector>

class CCmtd99File;
class ExpValue;
struct ExpNode;

// Compile mode when `out` is null: checks the arguments of `node` and sets its type. Run mode
// otherwise: evaluates the arguments and builds the result into `out`.
using ExpHandler = void (*)(CCmtd99File &file, ExpNode &node, ExpValue *out);

struct ExpFunc
{
    ExpHandler handler = nullptr;
    const char *name = "";
    QString title;
    const char *args = ""; // the argument form shown to the engineer
    QString help;
};

struct ExpFuncGroup
{
    QString title;
    std::vector<ExpFunc> rows;
    int count = 0;
};

// Fills the table (start-up); filling again renews the translated texts.
void FillExpFunctionTable();
// The groups in the order the form shows them; filled on first use if start-up did not.
const std::vector<ExpFuncGroup> &ExpFunctionGroups();
// The row named `name` without regard to case; null when there is none.
const ExpFunc *FindExpFunc(std::string_view name);
