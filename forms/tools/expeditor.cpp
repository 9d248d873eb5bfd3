#include "expeditor.h"

#include "expanamulti.h"
#include "expfunctions.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStringListModel>
#include <QTextBlock>

namespace {

bool isNameStart(QChar c)
{
    return c.isLetter() || c == u'_';
}

bool isNameChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

// The end of a number that begins at `from`: digits with one point and a decimal exponent.
qsizetype numberEnd(const QString &text, qsizetype from)
{
    qsizetype i = from;
    while (i < text.size() && (text[i].isDigit() || text[i] == u'.'))
        ++i;
    if (i < text.size() && (text[i] == u'e' || text[i] == u'E')) {
        qsizetype j = i + 1;
        if (j < text.size() && (text[j] == u'+' || text[j] == u'-'))
            ++j;
        if (j < text.size() && text[j].isDigit()) {
            i = j;
            while (i < text.size() && text[i].isDigit())
                ++i;
        }
    }
    return i;
}

} // namespace

CExpHighlighter::CExpHighlighter(QTextDocument *document) : QSyntaxHighlighter(document)
{
    m_formats[FormatChannel].setForeground(QColor(0x00, 0x40, 0xC0));
    m_formats[FormatChannel].setFontWeight(QFont::Bold);
    m_formats[FormatResult].setForeground(QColor(0x90, 0x20, 0x90));
    m_formats[FormatFunction].setForeground(QColor(0x00, 0x80, 0x60));
    m_formats[FormatFunction].setFontWeight(QFont::Bold);
    m_formats[FormatConstant].setForeground(QColor(0xB0, 0x50, 0x00));
    m_formats[FormatNumber].setForeground(QColor(0x80, 0x60, 0x00));
    m_formats[FormatComment].setForeground(QColor(0x80, 0x80, 0x80));
    m_formats[FormatComment].setFontItalic(true);
}

void CExpHighlighter::setChannelNames(const QStringList &names)
{
    QSet<QString> lower;
    for (const QString &name : names)
        lower.insert(name.toLower());
    if (lower == m_channels)
        return;
    m_channels = std::move(lower);
    rehighlight();
}

qsizetype CExpHighlighter::quotedName(const QString &text, qsizetype from)
{
    const qsizetype close = text.indexOf(u'"', from + 1);
    const qsizetype end = close < 0 ? text.size() : close + 1;
    const QString name = text.mid(from + 1, (close < 0 ? text.size() : close) - from - 1);
    const bool known = m_channels.contains(name.trimmed().toLower());
    setFormat(int(from), int(end - from), m_formats[known ? FormatChannel : FormatResult]);
    return end;
}

qsizetype CExpHighlighter::word(const QString &text, qsizetype from)
{
    qsizetype end = from;
    while (end < text.size() && isNameChar(text[end]))
        ++end;
    const QByteArray name = text.mid(from, end - from).toUtf8();
    const std::string_view view(name.constData(), size_t(name.size()));
    double unused = 0.0;
    if (FindExpFunc(view))
        setFormat(int(from), int(end - from), m_formats[FormatFunction]);
    else if (FindExpConstant(view, unused))
        setFormat(int(from), int(end - from), m_formats[FormatConstant]);
    return end;
}

void CExpHighlighter::highlightBlock(const QString &text)
{
    // A comment runs to the end of the line, quotes or not, as the compiler reads it.
    const qsizetype comment = text.indexOf(QLatin1String("//"));
    const QString code = comment < 0 ? text : text.left(comment);
    qsizetype i = 0;
    while (i < code.size()) {
        const QChar c = code[i];
        if (c == u'"') {
            i = quotedName(code, i);
        } else if (isNameStart(c)) {
            i = word(code, i);
        } else if (c.isDigit() || (c == u'.' && i + 1 < code.size() && code[i + 1].isDigit())) {
            const qsizetype end = numberEnd(code, i);
            setFormat(int(i), int(end - i), m_formats[FormatNumber]);
            i = end;
        } else {
            ++i;
        }
    }
    if (comment >= 0)
        setFormat(int(comment), int(text.size() - comment), m_formats[FormatComment]);
}

CExpEditor::CExpEditor(QWidget *parent)
    : QPlainTextEdit(parent), m_completer(new QCompleter(this)), m_names(new QStringListModel(this)),
      m_highlighter(new CExpHighlighter(document()))
{
    setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont mono(QStringLiteral("Monospace"));
    mono.setStyleHint(QFont::TypeWriter);
    setFont(mono);
    setTabStopDistance(fontMetrics().horizontalAdvance(QLatin1Char(' ')) * 4);
    m_completer->setModel(m_names);
    m_completer->setWidget(this);
    m_completer->setCompletionMode(QCompleter::PopupCompletion);
    m_completer->setCaseSensitivity(Qt::CaseInsensitive);
    m_completer->setFilterMode(Qt::MatchContains);
    connect(m_completer, qOverload<const QString &>(&QCompleter::activated), this,
            &CExpEditor::insertCompletion);
}

void CExpEditor::setChannelNames(const QStringList &names)
{
    if (m_names->stringList() != names)
        m_names->setStringList(names);
    m_highlighter->setChannelNames(names);
}

bool CExpEditor::quotedPrefix(QString &prefix) const
{
    const QTextCursor cursor = textCursor();
    const QString before = cursor.block().text().left(cursor.positionInBlock());
    if (before.contains(QLatin1String("//")) || before.count(u'"') % 2 == 0)
        return false;
    prefix = before.mid(before.lastIndexOf(u'"') + 1);
    return true;
}

void CExpEditor::insertCompletion(const QString &name)
{
    QString prefix;
    if (!quotedPrefix(prefix))
        return;
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.movePosition(QTextCursor::Left, QTextCursor::KeepAnchor, int(prefix.size()));
    cursor.insertText(name);
    // A quote that stands already is stepped over rather than doubled.
    const QString after = cursor.block().text().mid(cursor.positionInBlock(), 1);
    if (after == QLatin1String("\""))
        cursor.movePosition(QTextCursor::Right);
    else
        cursor.insertText(QStringLiteral("\""));
    cursor.endEditBlock();
    setTextCursor(cursor);
    m_completer->popup()->hide();
}

void CExpEditor::keyPressEvent(QKeyEvent *event)
{
    if (m_completer->popup()->isVisible()) {
        // The list takes the keys that choose or dismiss.
        switch (event->key()) {
        case Qt::Key_Enter:
        case Qt::Key_Return:
        case Qt::Key_Escape:
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
            event->ignore();
            return;
        default:
            break;
        }
    }
    QPlainTextEdit::keyPressEvent(event);
    updateCompletion(event->text() == QLatin1String("\""));
}

void CExpEditor::updateCompletion(bool typedQuote)
{
    QAbstractItemView *popup = m_completer->popup();
    QString prefix;
    if (!quotedPrefix(prefix) || (!typedQuote && !popup->isVisible())) {
        popup->hide();
        return;
    }
    m_completer->setCompletionPrefix(prefix);
    if (m_completer->completionCount() == 0) {
        popup->hide();
        return;
    }
    popup->setCurrentIndex(m_completer->completionModel()->index(0, 0));
    QRect at = cursorRect();
    at.setWidth(popup->sizeHintForColumn(0) + popup->verticalScrollBar()->sizeHint().width());
    m_completer->complete(at);
}
