#pragma once

#include <QPlainTextEdit>
#include <QSet>
#include <QStringList>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>

class QCompleter;
class QStringListModel;

// Colours a script as the engineer reads it: quoted names of the recording's channels apart
// from other quoted names (results to be made), the library's function names, the system
// constants, numbers and the comment that "//" begins.
class CExpHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT

public:
    enum Format
    {
        FormatChannel = 0,
        FormatResult,
        FormatFunction,
        FormatConstant,
        FormatNumber,
        FormatComment,
        FormatCount
    };

    explicit CExpHighlighter(QTextDocument *document);

    // The channel names that count as known (compared without regard to case); recolours.
    void setChannelNames(const QStringList &names);
    const QTextCharFormat &format(Format which) const { return m_formats[which]; }

protected:
    void highlightBlock(const QString &text) override;

private:
    // Colours the quoted name that opens at `from`; gives the position after its closing quote.
    qsizetype quotedName(const QString &text, qsizetype from);
    qsizetype word(const QString &text, qsizetype from);

    QSet<QString> m_channels; // lower case
    QTextCharFormat m_formats[FormatCount];
};

// The script editor: a plain text editor whose channel completion opens at a double quote and
// offers the recording's channel names; taking one closes the quote.
class CExpEditor : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit CExpEditor(QWidget *parent = nullptr);

    // The names offered and coloured as channels.
    void setChannelNames(const QStringList &names);
    QCompleter *completer() const { return m_completer; }
    CExpHighlighter *highlighter() const { return m_highlighter; }
    // The part of a channel name typed since the opening quote before the cursor; false when
    // the cursor does not stand within quotes.
    bool quotedPrefix(QString &prefix) const;
    // Takes `name` for the quoted prefix at the cursor and closes the quote.
    void insertCompletion(const QString &name);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void updateCompletion(bool typedQuote);

    QCompleter *m_completer;
    QStringListModel *m_names;
    CExpHighlighter *m_highlighter;
};
