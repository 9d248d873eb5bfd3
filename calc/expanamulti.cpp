#include "expanamulti.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "expfunctions.h"
#include "textcodec.h"

#include <QCoreApplication>

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <new>

#define EXP_TR(text) QT_TRANSLATE_NOOP("CExpAnaMulti", text)

ExpMessageList ExpMessages;

namespace {

// The text encoding of the recording the script was compiled against: names in messages and
// in the log are bytes in it.
QByteArray messageCodec;

// A script longer than this is refused with the memory message rather than copied.
constexpr qsizetype kMaxScriptBytes = qsizetype(64) << 20;

QString formatMessage(const char *format, va_list args)
{
    const QByteArray key = EncodeText(QCoreApplication::translate("CExpAnaMulti", format), messageCodec);
    char buffer[1032];
    std::vsnprintf(buffer, sizeof buffer, key.constData(), args);
    return DecodeText(QByteArray(buffer), messageCodec);
}

QByteArray bytesOf(std::string_view text)
{
    return QByteArray(text.data(), qsizetype(text.size()));
}

struct SysConstant
{
    const char *name;
    double value;
};

// The shortened pi literal is the system's own; the roots and e are computed once.
const SysConstant *sysConstants()
{
    static const SysConstant constants[] = {
        {"PI", 3.1415926535898}, {"SQRT2", std::sqrt(2.0)}, {"SQRT3", std::sqrt(3.0)},
        {"EXP", std::exp(1.0)},  {"Hermite2", 0.0},         {"Newton2", 2.0},
        {"Lagrange2", 1.0},      {"Lagrange1", 3.0},        {nullptr, 0.0}};
    return constants;
}

char lowerAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

} // namespace

bool ExpSameName(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (lowerAscii(a[i]) != lowerAscii(b[i]))
            return false;
    }
    return true;
}

bool FindExpConstant(std::string_view name, double &value)
{
    for (const SysConstant *c = sysConstants(); c->name; ++c) {
        if (ExpSameName(name, c->name)) {
            value = c->value;
            return true;
        }
    }
    return false;
}

void ExpReport(int position, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    QString text = formatMessage(format, args);
    va_end(args);
    ExpMessages.emplace_back(position, std::move(text));
}

QString ExpFormat(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    QString text = formatMessage(format, args);
    va_end(args);
    return text;
}

CExpAnaMulti::~CExpAnaMulti() = default;

void CExpAnaMulti::clearProgram()
{
    m_statements.clear();
    m_copy.clear();
    m_file = nullptr;
}

void CExpAnaMulti::Compile(CCmtd99File &file, const QString &text)
{
    clearProgram();
    ExpMessages.clear();
    ExpClearMemoryFault();
    m_file = &file;
    messageCodec = file.codecName;
    // The script is a C string: it ends at its first NUL character.
    const QString script = text.left(text.indexOf(QChar(0)));
    if (script.isEmpty()) {
        ExpReport(0, EXP_TR("Error: Expression is empty!"));
        return;
    }
    const QByteArray encoded = EncodeText(script, file.codecName);
    if (encoded.size() > kMaxScriptBytes) {
        ExpReport(0, EXP_TR("Error: Memory is not enough!"));
        return;
    }
    // The working copy, zero-filled to a multiple of 32 bytes; the trees point into it.
    m_copy = QByteArray((encoded.size() + 32) / 32 * 32, '\0');
    std::copy(encoded.begin(), encoded.end(), m_copy.begin());
    const std::string_view copy(m_copy.constData(), size_t(encoded.size()));
    size_t begin = 0;
    while (begin <= copy.size()) {
        size_t end = copy.find('\n', begin);
        if (end == std::string_view::npos)
            end = copy.size();
        std::string_view line = copy.substr(begin, end - begin);
        // A comment runs to the end of the line, quotes or not.
        line = line.substr(0, line.find("//"));
        compileLine(line);
        begin = end + 1;
    }
    positionsToCharacters(0);
}

void CExpAnaMulti::compileLine(std::string_view line)
{
    while (!line.empty()) {
        const size_t semicolon = ExpFindTopLevel(line, ';');
        const std::string_view piece = ExpTrim(line.substr(0, semicolon));
        if (!piece.empty())
            compileStatement(piece);
        if (semicolon == std::string_view::npos)
            break;
        line = line.substr(semicolon + 1);
    }
}

void CExpAnaMulti::compileStatement(std::string_view piece)
{
    std::string_view name;
    std::string_view expression = piece;
    bool quoted = false;
    const size_t equals = ExpFindTopLevel(piece, '=');
    if (equals != std::string_view::npos) {
        const std::string_view left = ExpTrim(piece.substr(0, equals));
        expression = ExpTrim(piece.substr(equals + 1));
        if (!left.empty() && left.front() == '"') {
            quoted = true;
            const size_t close = left.find('"', 1);
            if (close == std::string_view::npos) {
                name = left.substr(1);
                ExpReport(positionOf(left), EXP_TR("Warning: [%s] require [\"] at end!"),
                          bytesOf(name).constData());
            } else {
                name = left.substr(1, close - 1);
                const std::string_view behind = ExpTrim(left.substr(close + 1));
                if (!behind.empty())
                    ExpReport(positionOf(behind), EXP_TR("Warning: [%s] is unwanted before [=]!"),
                              bytesOf(behind).constData());
            }
            if (name.empty()) {
                ExpReport(positionOf(left), EXP_TR("Error: [Result Channel Name] can not empty!"));
                return;
            }
        } else if (left.find('"') != std::string_view::npos) {
            ExpReport(positionOf(left), EXP_TR("Error: Invalid characters in the temp-variant name!"));
            return;
        } else {
            name = left;
        }
    }
    if (expression.empty()) {
        ExpReport(positionOf(equals == std::string_view::npos ? piece : piece.substr(equals)),
                  EXP_TR("Error: Expression is empty!"));
        return;
    }
    if (!name.empty() && !checkResultName(name, positionOf(name)))
        return;
    std::unique_ptr<ExpStatement> statement(new (std::nothrow) ExpStatement);
    if (!statement) {
        ExpReport(positionOf(piece), EXP_TR("Error: Memory is not enough!"));
        return;
    }
    m_tooDeep = false;
    statement->root = buildNode(expression, nullptr, 0);
    statement->named = !name.empty();
    statement->resultName = bytesOf(name);
    statement->label = bytesOf(name.empty() ? expression : name);
    const bool channelResult = statement->root && statement->root->type == ExpTypeChannel;
    statement->kind = quoted && channelResult ? ExpStatementChannel : ExpStatementOther;
    m_statements.push_back(std::move(statement));
}

bool CExpAnaMulti::checkResultName(std::string_view name, int position)
{
    const QByteArray text = bytesOf(name);
    double constant = 0.0;
    const CChnMapAnalog *chn = findChannel(name);
    if (chn && chn->config && !m_file->IsVirtualAnalog(*chn->config))
        ExpReport(position, EXP_TR("Error: Overlaped Result channel name [%s]!"), text.constData());
    else if (FindExpFunc(name))
        ExpReport(position, EXP_TR("Error: Result channel name [%s] Overlap to Sys-Func Name!"),
                  text.constData());
    else if (FindExpConstant(name, constant))
        ExpReport(position, EXP_TR("Error: Result channel name [%s] Overlap to Sys-Constant Name!"),
                  text.constData());
    else if (FindVariable(name))
        ExpReport(position, EXP_TR("Error: Result channel name [%s] Overlap to variant name!"),
                  text.constData());
    else
        return true;
    return false;
}

ExpStatement *CExpAnaMulti::FindVariable(std::string_view name) const
{
    for (const auto &statement : m_statements) {
        if (statement->named && ExpSameName(std::string_view(statement->resultName.constData(),
                                                             size_t(statement->resultName.size())),
                                            name))
            return statement.get();
    }
    return nullptr;
}

CChnMapAnalog *CExpAnaMulti::findChannel(std::string_view name) const
{
    if (!m_file)
        return nullptr;
    // The name shown first, over all channels; then the file's own name of a file's channel.
    for (const auto &map : m_file->analogMaps) {
        if (map->config && ExpSameName(map->Name(), name))
            return map.get();
    }
    for (const auto &map : m_file->analogMaps) {
        if (map->config && !m_file->IsVirtualAnalog(*map->config) &&
            ExpSameName(std::string_view(map->config->ch_id.constData(), size_t(map->config->ch_id.size())),
                        name))
            return map.get();
    }
    return nullptr;
}

int CExpAnaMulti::positionOf(std::string_view text) const
{
    if (m_copy.isEmpty() || text.data() < m_copy.constData() ||
        text.data() > m_copy.constData() + m_copy.size())
        return 0;
    return int(text.data() - m_copy.constData());
}

void CExpAnaMulti::positionsToCharacters(size_t firstMessage)
{
    for (size_t i = firstMessage; i < ExpMessages.size(); ++i) {
        int &position = ExpMessages[i].first;
        if (position > 0 && position <= m_copy.size())
            position = int(DecodeText(m_copy.left(position), messageCodec).size());
    }
}

bool CExpAnaMulti::Evaluate()
{
    if (!m_file)
        return false;
    ExpClearMemoryFault();
    for (const auto &statement : m_statements) {
        statement->value.clear();
        if (!statement->root || !EvalNode(*m_file, *statement->root, statement->value) || ExpMemoryFault()) {
            statement->value.clear();
            ExpReport(0, EXP_TR("Error: Memory is not enough!"));
            return false;
        }
    }
    return true;
}
