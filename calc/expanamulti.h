#pragma once

// The expression language of the expression form: the engineer writes a script of statements
// that combine constants, complex numbers and whole channels, and gets numbers or new virtual
// channels. CExpAnaMulti compiles a script into one expression tree per statement, reporting
// every fault it finds with its place in the text, and then evaluates the statements in order.
// Everything runs on the interface thread; the recording must stay open from Compile to the end
// of the result log.

#include "expvalue.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

class CCmtd99File;
class CChnMapAnalog;
struct ExpFunc;
struct ExpStatement;

// Kinds of tree nodes.
enum ExpNodeKind : int16_t
{
    ExpNodeOperator = 1,
    ExpNodeFunction = 2,
    ExpNodeSysConstant = 3,
    ExpNodeNumber = 4,
    ExpNodeChannel = 6,
    ExpNodeVariable = 8
};

// One node of an expression tree.
struct ExpNode
{
    int16_t kind = 0;
    int16_t type = 0;      // the type expected at compile time: 4, 5, 7, or 0 where none was deduced
    std::string_view text; // this node's source, within the working copy
    int32_t pos = 0;       // where `text` begins in the working copy: the place of messages
    std::unique_ptr<ExpNode> left;
    std::unique_ptr<ExpNode> right;
    std::vector<std::unique_ptr<ExpNode>> args;
    ExpNode *parent = nullptr;
    char op = 0;
    const ExpFunc *func = nullptr;
    double value = 0.0;
    CChnMapAnalog *channel = nullptr;
    ExpStatement *variable = nullptr;
};

enum ExpStatementKind : int32_t
{
    ExpStatementChannel = 1, // a quoted name whose expression gives a channel
    ExpStatementOther = 3
};

struct ExpStatement
{
    int32_t kind = ExpStatementOther;
    QByteArray label;      // the result name, or the expression text when there is none
    QByteArray resultName; // empty when there is no name
    bool named = false;
    std::unique_ptr<ExpNode> root;
    ExpValue value;
};

// The process-wide list of messages of the last compile (and of an evaluation that ran out of
// memory): position in the script text (in characters) and the text.
using ExpMessageList = std::vector<std::pair<int, QString>>;
extern ExpMessageList ExpMessages;

// Formats a message by the C rules into a 1032-byte buffer, its format translated first, and
// appends it with `position` (a byte offset in the working copy while compiling). `%s`
// arguments are bytes of the recording's text encoding.
void ExpReport(int position, const char *format, ...);
// The same formatting into a returned text, for the result log.
QString ExpFormat(const char *format, ...);

// Evaluates a node into `out`; the function handlers call it for their arguments. False when
// memory ran out (the fault is set).
bool EvalNode(CCmtd99File &file, ExpNode &node, ExpValue &out);

// One line of the result log; `channel` is set on the rows that brought a new virtual channel
// into the recording (shown with the channel icon).
struct ExpLogLine
{
    QString text;
    CChnMapAnalog *channel = nullptr;
};

class CExpAnaMulti
{
public:
    CExpAnaMulti() = default;
    CExpAnaMulti(const CExpAnaMulti &) = delete;
    CExpAnaMulti &operator=(const CExpAnaMulti &) = delete;
    virtual ~CExpAnaMulti();

    // Empties the program and the message list and compiles `text` against `file`. An empty
    // message list afterwards means that Evaluate may run.
    void Compile(CCmtd99File &file, const QString &text);
    // Evaluates the statements in order; false when memory ran out (reported in ExpMessages).
    bool Evaluate();
    // The result log after Evaluate: the header, the messages, then one line per statement.
    // Result channels of quoted names enter the recording here (replacing a virtual channel of
    // the same name); their lines carry the channel, for the wave view.
    std::vector<ExpLogLine> TakeResults();

    // The first statement named `name`, without regard to case; null when none.
    ExpStatement *FindVariable(std::string_view name) const;
    const std::vector<std::unique_ptr<ExpStatement>> &Statements() const { return m_statements; }

private:
    void clearProgram();
    void compileLine(std::string_view line);
    void compileStatement(std::string_view piece);
    bool checkResultName(std::string_view name, int position);
    // The parser (expparse.cpp).
    std::unique_ptr<ExpNode> buildNode(std::string_view text, ExpNode *parent, int depth);
    // 1 with the operator and its trimmed halves, 0 for none, -1 when the parentheses nest
    // too deeply; `text` loses the parentheses that enclose it whole.
    int findOperator(std::string_view &text, int &depth, char &op, std::string_view &left,
                     std::string_view &right);
    void checkParens(std::string_view text);
    void buildOperator(ExpNode &node, std::string_view left, std::string_view right, int depth);
    void buildNumber(ExpNode &node);
    void buildName(ExpNode &node, int depth);
    void buildFunction(ExpNode &node, int depth);
    void buildChannel(ExpNode &node);
    CChnMapAnalog *findChannel(std::string_view name) const;
    int positionOf(std::string_view text) const;
    // Message positions of this compile from bytes of the working copy to characters.
    void positionsToCharacters(size_t firstMessage);
    ExpLogLine logLine(ExpStatement &statement);

    std::vector<std::unique_ptr<ExpStatement>> m_statements;
    QByteArray m_copy; // the working copy of the script in the recording's text encoding
    CCmtd99File *m_file = nullptr;
    bool m_tooDeep = false; // the nesting message was given for this statement
};

// Nesting levels of one expression (operators, parentheses, function calls) before the parser
// gives up: the trees are walked recursively.
constexpr int kExpMaxDepth = 400;

// The eight system constants: name and value (searched without regard to case).
bool FindExpConstant(std::string_view name, double &value);
// Text comparison without regard to ASCII case.
bool ExpSameName(std::string_view a, std::string_view b);
// Without leading and trailing white space.
std::string_view ExpTrim(std::string_view text);
// The first `ch` outside quotes and at parenthesis depth 0 (counted forward); npos when none.
size_t ExpFindTopLevel(std::string_view text, char ch);
