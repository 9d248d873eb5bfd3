// The parser of the expression language: a statement's expression is taken apart from the
// outside in, at the operator that binds loosest, searched from the right, so that all three
// levels (+ -, * /, ^) associate to the left. Parentheses are checked at every level.

#include "chnmap.h"
#include "cmtd99file.h"
#include "expanamulti.h"
#include "expfunctions.h"

#include <QByteArray>

#include <new>

#define EXP_TR(text) QT_TRANSLATE_NOOP("CExpAnaMulti", text)

namespace {

constexpr size_t npos = std::string_view::npos;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

QByteArray bytesOf(std::string_view text)
{
    return QByteArray(text.data(), qsizetype(text.size()));
}

// The operator of loosest binding, rightmost at depth 0 outside quotes: + or - (not at index
// 0, where a sign belongs to a number), else * or /, else ^. Depth and quotes are counted from
// the right: a ")" opens a level there. npos when there is none.
size_t loosestOperator(std::string_view text)
{
    size_t found[3] = {npos, npos, npos};
    int depth = 0;
    bool quoted = false;
    for (size_t i = text.size(); i-- > 0;) {
        const char c = text[i];
        if (c == '"') {
            quoted = !quoted;
        } else if (quoted) {
            continue;
        } else if (c == ')') {
            ++depth;
        } else if (c == '(') {
            --depth;
        } else if (depth != 0) {
            continue;
        } else if ((c == '+' || c == '-') && i > 0) {
            return i; // nothing binds looser
        } else if ((c == '*' || c == '/') && found[1] == npos) {
            found[1] = i;
        } else if (c == '^' && found[2] == npos) {
            found[2] = i;
        }
    }
    return found[1] != npos ? found[1] : found[2];
}

// An optional sign, then digits with at most one point.
bool isNumberText(std::string_view text)
{
    size_t i = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
    int points = 0;
    for (; i < text.size(); ++i) {
        if (text[i] == '.') {
            if (++points > 1)
                return false;
        } else if (!isDigit(text[i])) {
            return false;
        }
    }
    return true;
}

// A variable takes the type its statement's expression was given.
void setVariable(ExpNode &node, ExpStatement &statement)
{
    node.kind = ExpNodeVariable;
    node.variable = &statement;
    node.type = statement.root ? statement.root->type : 0;
}

} // namespace

std::string_view ExpTrim(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

size_t ExpFindTopLevel(std::string_view text, char ch)
{
    int quotes = 0;
    int depth = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            ++quotes;
        } else if (quotes % 2 == 0 && c == '(') {
            ++depth;
        } else if (quotes % 2 == 0 && c == ')') {
            --depth;
        } else if (c == ch && quotes % 2 == 0 && depth == 0) {
            return i;
        }
    }
    return npos;
}

void CExpAnaMulti::checkParens(std::string_view text)
{
    // Quotes are not heeded here: a parenthesis in a channel name counts. A surplus ")" is the
    // first that finds no "(" before it; a surplus "(" the first that finds no ")" after it.
    size_t opens = 0;
    size_t closes = 0;
    size_t surplusClose = npos;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '(')
            ++opens;
        else if (text[i] == ')' && ++closes > opens && surplusClose == npos)
            surplusClose = i;
    }
    if (closes > opens) {
        ExpReport(positionOf(text.substr(surplusClose)), EXP_TR("Error: [)] not match to [(]!"));
    } else if (opens > closes) {
        size_t surplusOpen = npos;
        size_t pending = 0;
        for (size_t i = text.size(); i-- > 0;) {
            if (text[i] == ')')
                ++pending;
            else if (text[i] == '(' && pending > 0)
                --pending;
            else if (text[i] == '(')
                surplusOpen = i;
        }
        ExpReport(positionOf(text.substr(surplusOpen)), EXP_TR("Error: [(] not match to [)]!"));
    }
}

int CExpAnaMulti::findOperator(std::string_view &text, int &depth, char &op, std::string_view &left,
                               std::string_view &right)
{
    for (;;) {
        checkParens(text);
        const size_t at = loosestOperator(text);
        if (at != npos) {
            op = text[at];
            left = ExpTrim(text.substr(0, at));
            right = ExpTrim(text.substr(at + 1));
            return 1;
        }
        if (text.size() < 2 || text.front() != '(' || text.back() != ')')
            return 0;
        text = ExpTrim(text.substr(1, text.size() - 2));
        if (++depth > kExpMaxDepth)
            return -1;
    }
}

std::unique_ptr<ExpNode> CExpAnaMulti::buildNode(std::string_view text, ExpNode *parent, int depth)
{
    std::unique_ptr<ExpNode> node(new (std::nothrow) ExpNode);
    if (!node) {
        ExpReport(positionOf(text), EXP_TR("Error: Memory is not enough!"));
        return nullptr;
    }
    node->parent = parent;
    node->text = text;
    node->pos = positionOf(text);
    char op = 0;
    std::string_view left;
    std::string_view right;
    const int found = depth > kExpMaxDepth ? -1 : findOperator(text, depth, op, left, right);
    node->text = text;
    node->pos = positionOf(text);
    if (found < 0) {
        // Each level is a frame of the parser and of the evaluation: a bound, not a crash.
        if (!m_tooDeep)
            ExpReport(node->pos, EXP_TR("Error: Expression is nested too deeply!"));
        m_tooDeep = true;
    } else if (found > 0) {
        node->op = op;
        buildOperator(*node, left, right, depth);
    } else if (!text.empty() && (text[0] == '.' || text[0] == '+' || text[0] == '-' || isDigit(text[0]))) {
        buildNumber(*node);
    } else if (!text.empty() && (text[0] == '_' || isLetter(text[0]))) {
        buildName(*node, depth);
    } else {
        buildChannel(*node);
    }
    return node;
}

void CExpAnaMulti::buildOperator(ExpNode &node, std::string_view left, std::string_view right, int depth)
{
    if (left.empty()) {
        ExpReport(node.pos, EXP_TR("Error: Operator [%c] Lossing Left-operand!"), node.op);
        return;
    }
    if (right.empty()) {
        ExpReport(node.pos, EXP_TR("Error: Operator [%c] Lossing Right-operand!"), node.op);
        return;
    }
    node.kind = ExpNodeOperator;
    node.left = buildNode(left, &node, depth + 1);
    node.right = buildNode(right, &node, depth + 1);
    const int l = node.left ? node.left->type : 0;
    const int r = node.right ? node.right->type : 0;
    if (node.op == '^') {
        // A power sets no type: its node counts as a constant in the rules that follow.
        if (l == ExpTypeComplex)
            ExpReport(node.pos, EXP_TR("Error: Left-operand of [^] can not be a complex number!"));
        if (r == ExpTypeComplex)
            ExpReport(node.pos, EXP_TR("Error: Right-operand of [^] can not be a complex number!"));
        return;
    }
    if (l == ExpTypeChannel && r == ExpTypeComplex) {
        const char opText[2] = {node.op, '\0'};
        ExpReport(node.pos, EXP_TR("Error: Channel datas can not [%s] with complex number!"), opText);
        return;
    }
    if (node.type != 0)
        return;
    if (l == ExpTypeChannel || r == ExpTypeChannel)
        node.type = ExpTypeChannel;
    else if (l == ExpTypeComplex || r == ExpTypeComplex)
        node.type = ExpTypeComplex;
    else
        node.type = ExpTypeConstant;
}

void CExpAnaMulti::buildNumber(ExpNode &node)
{
    const QByteArray text = bytesOf(node.text);
    if (!isNumberText(node.text)) {
        ExpReport(node.pos, EXP_TR("Error: Invalid characters in the conatant [%s]!"), text.constData());
        return;
    }
    node.kind = ExpNodeNumber;
    node.type = ExpTypeConstant;
    node.value = text.toDouble(); // a sign or a point alone reads as 0, as atof reads it
}

void CExpAnaMulti::buildName(ExpNode &node, int depth)
{
    const std::string_view text = node.text;
    if (text.back() == ')' && text.find('(') != npos) {
        buildFunction(node, depth);
        return;
    }
    double constant = 0.0;
    if (FindExpConstant(text, constant)) {
        node.kind = ExpNodeSysConstant;
        node.type = ExpTypeConstant;
        node.value = constant;
    } else if (ExpStatement *variable = FindVariable(text)) {
        setVariable(node, *variable);
    } else {
        ExpReport(node.pos, EXP_TR("Error: Unknown variant name [%s]!"), bytesOf(text).constData());
    }
}

void CExpAnaMulti::buildFunction(ExpNode &node, int depth)
{
    const std::string_view text = node.text;
    const size_t open = text.find('(');
    const std::string_view name = ExpTrim(text.substr(0, open));
    const ExpFunc *func = FindExpFunc(name);
    if (!func) {
        ExpReport(node.pos, EXP_TR("Error: Unknown func. name [%s]!"), bytesOf(name).constData());
        return;
    }
    node.kind = ExpNodeFunction;
    node.func = func;
    std::string_view rest = text.substr(open + 1, text.size() - open - 2);
    for (;;) {
        const size_t comma = ExpFindTopLevel(rest, ',');
        const std::string_view piece = ExpTrim(rest.substr(0, comma));
        // A last empty piece adds no argument: "f()" has none, "f(1,)" one.
        if (comma == npos && piece.empty())
            break;
        node.args.push_back(buildNode(piece.empty() ? rest.substr(0, 0) : piece, &node, depth + 1));
        if (!node.args.back()) {
            node.args.pop_back();
            return;
        }
        if (comma == npos)
            break;
        rest = rest.substr(comma + 1);
    }
    func->handler(*m_file, node, nullptr);
}

void CExpAnaMulti::buildChannel(ExpNode &node)
{
    const std::string_view text = node.text;
    const QByteArray shown = bytesOf(text);
    size_t start = 0;
    if (text.empty() || text[0] != '"')
        ExpReport(node.pos, EXP_TR("Warning: if [%s] is a channel name, require [\"] at begin!"),
                  shown.constData());
    else
        start = 1;
    const size_t close = text.find('"', start);
    if (close == npos)
        ExpReport(node.pos, EXP_TR("Warning: if [%s] is a channel name, require [\"] at end!"),
                  shown.constData());
    const std::string_view name = text.substr(start, close == npos ? npos : close - start);
    if (name.empty()) {
        ExpReport(node.pos, EXP_TR("Error: Invalid Expression [%s]!"), shown.constData());
        return;
    }
    if (CChnMapAnalog *chn = findChannel(name)) {
        node.kind = ExpNodeChannel;
        node.type = ExpTypeChannel;
        node.channel = chn;
    } else if (ExpStatement *variable = FindVariable(name)) {
        setVariable(node, *variable);
    } else {
        ExpReport(node.pos, EXP_TR("Error: Unknown channel or variant name [%s]!"),
                  bytesOf(name).constData());
    }
}
