#include "anaformtoolexpression.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtdviewananame.h"
#include "expanamulti.h"
#include "expeditor.h"
#include "expfunctions.h"
#include "safewrite.h"
#include "textcodec.h"

#include <QAction>
#include <QBoxLayout>
#include <QCoreApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QListWidget>
#include <QMessageBox>
#include <QSplitter>
#include <QStringDecoder>
#include <QTabWidget>
#include <QTextBlock>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include <algorithm>

namespace {

// Where the last script was opened or saved, for the next dialog.
QString lastScriptFolder;

enum : int
{
    RoleGroup = Qt::UserRole,  // a tree item's group, on column 0
    RoleRow = Qt::UserRole + 1 // its row within the group, -1 on a group's own item
};

// A script file is UTF-8; one written by another editor in the local code page still opens.
QString decodeScript(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8.decode(bytes);
    if (utf8.hasError())
        text = QString::fromLocal8Bit(bytes);
    text.remove(u'\r');
    return text;
}

} // namespace

CAnaFormToolExpression::CAnaFormToolExpression(int number, CCmtdChildFrame *frame,
                                               CCmtdChildContainerAna *container)
    : CAnaFormBase(number, frame, container), m_editor(new CExpEditor(this)), m_tree(new QTreeWidget(this)),
      m_help(new QPlainTextEdit(this)), m_tabs(new QTabWidget(this)), m_messages(new QListWidget(this)),
      m_log(new QListWidget(this))
{
    m_strTitle = tr("Expressions Editor");
    m_nDockFeatures = DockFeaturesAll;
    m_nDockH = fontMetrics().height() * 22;
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(2, 2, 2, 2);
    buildToolBar(column);

    m_editor->setObjectName(QStringLiteral("scriptEditor"));
    m_messages->setObjectName(QStringLiteral("messageList"));
    m_log->setObjectName(QStringLiteral("resultLog"));
    m_tabs->addTab(m_messages, QString());
    m_tabs->addTab(m_log, QString());
    auto *left = new QSplitter(Qt::Vertical, this);
    left->addWidget(m_editor);
    left->addWidget(m_tabs);
    left->setStretchFactor(0, 3);
    left->setStretchFactor(1, 1);

    m_tree->setObjectName(QStringLiteral("functionTree"));
    m_tree->setColumnCount(2);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_help->setObjectName(QStringLiteral("functionHelp"));
    m_help->setReadOnly(true);
    auto *right = new QSplitter(Qt::Vertical, this);
    right->addWidget(m_tree);
    right->addWidget(m_help);
    right->setStretchFactor(0, 3);
    right->setStretchFactor(1, 1);

    auto *split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(left);
    split->addWidget(right);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 2);
    column->addWidget(split, 1);

    connect(m_tree, &QTreeWidget::currentItemChanged, this, &CAnaFormToolExpression::slot_treeCurrentChanged);
    connect(m_tree, &QTreeWidget::itemDoubleClicked, this, &CAnaFormToolExpression::slot_treeDoubleClicked);
    connect(m_messages, &QListWidget::itemClicked, this, &CAnaFormToolExpression::slot_msgClicked);
    connect(m_messages, &QListWidget::itemActivated, this, &CAnaFormToolExpression::slot_msgClicked);
    connect(m_log, &QListWidget::itemDoubleClicked, this, &CAnaFormToolExpression::slot_logDoubleClicked);
    connect(m_editor, &QPlainTextEdit::textChanged, this, &CAnaFormToolExpression::slot_textChanged);
    retranslateTexts();
}

void CAnaFormToolExpression::buildToolBar(QBoxLayout *column)
{
    auto *bar = new QHBoxLayout;
    m_btnOpen = makeButton("FileOpen.png");
    m_btnSave = makeButton("FileSave.png");
    m_btnCompile = makeButton("ToolsExp.png");
    m_btnRun = makeButton("ctrlPlay.png");
    m_btnCompile->setObjectName(QStringLiteral("btnCompile"));
    m_btnRun->setObjectName(QStringLiteral("btnRun"));
    for (QToolButton *button : {m_btnOpen, m_btnSave, m_btnCompile, m_btnRun})
        bar->addWidget(button);
    bar->addStretch(1);
    column->addLayout(bar);
    connect(m_btnOpen, &QToolButton::clicked, this, &CAnaFormToolExpression::slot_btnOpen);
    connect(m_btnSave, &QToolButton::clicked, this, &CAnaFormToolExpression::slot_btnSave);
    connect(m_btnCompile, &QToolButton::clicked, this, &CAnaFormToolExpression::slot_btnCompile);
    connect(m_btnRun, &QToolButton::clicked, this, &CAnaFormToolExpression::slot_btnRun);

    // The keys work anywhere in the form, the editor included.
    auto *compileKey = new QAction(this);
    compileKey->setShortcut(Qt::Key_F7);
    auto *runKey = new QAction(this);
    runKey->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Return), QKeySequence(Qt::CTRL | Qt::Key_Enter)});
    for (QAction *key : {compileKey, runKey}) {
        key->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(key);
    }
    connect(compileKey, &QAction::triggered, this, &CAnaFormToolExpression::slot_btnCompile);
    connect(runKey, &QAction::triggered, this, &CAnaFormToolExpression::slot_btnRun);
}

void CAnaFormToolExpression::retranslateTexts()
{
    m_btnOpen->setText(tr("Open [.tef]"));
    m_btnSave->setText(tr("Save [.tef]"));
    m_btnCompile->setText(tr("Compile"));
    m_btnCompile->setToolTip(tr("Compile the script and list its errors (F7)"));
    m_btnRun->setText(tr("Run"));
    m_btnRun->setToolTip(tr("Run the script and add its channels to the wave (Ctrl+Return)"));
    m_tabs->setTabText(0, tr("Messages"));
    m_tabs->setTabText(1, tr("Result"));
    m_tree->setHeaderLabels({tr("Function"), tr("Title")});
    m_editor->setPlaceholderText(tr("\"Name\" = expression; one statement per line or separated by ';'"));
    fillFunctionTree();
}

void CAnaFormToolExpression::fillFunctionTree()
{
    m_tree->clear();
    const std::vector<ExpFuncGroup> &groups = ExpFunctionGroups();
    for (int g = 0; g < int(groups.size()); ++g) {
        const ExpFuncGroup &group = groups[size_t(g)];
        auto *head = new QTreeWidgetItem(m_tree, {group.title});
        head->setData(0, RoleGroup, g);
        head->setData(0, RoleRow, -1);
        QFont bold = head->font(0);
        bold.setBold(true);
        head->setFont(0, bold);
        for (int r = 0; r < int(group.rows.size()); ++r) {
            const ExpFunc &row = group.rows[size_t(r)];
            auto *item = new QTreeWidgetItem(head, {QString::fromLatin1(row.args), row.title});
            item->setData(0, RoleGroup, g);
            item->setData(0, RoleRow, r);
            item->setToolTip(0, row.help);
        }
    }
}

bool CAnaFormToolExpression::activate()
{
    // The recording's own script comes into the editor once; afterwards the editor is the
    // script, and the recording follows it.
    if (!m_loaded) {
        m_loaded = true;
        const CCmtd99File &file = m_pFrame->recording();
        QStringList lines;
        for (const QByteArray &line : file.expressionLines)
            lines.append(file.Text(line));
        m_loading = true;
        m_editor->setPlainText(lines.join(u'\n'));
        m_loading = false;
    }
    refreshChannelNames();
    m_editor->setFocus();
    return CAnaFormBase::activate();
}

void CAnaFormToolExpression::forgetChannel(const CChnMapBase *channel)
{
    CAnaFormBase::forgetChannel(channel);
    // The channel leaves the recording right after this call.
    QTimer::singleShot(0, this, &CAnaFormToolExpression::refreshChannelNames);
}

void CAnaFormToolExpression::refreshChannelNames()
{
    const CCmtd99File &file = m_pFrame->recording();
    QStringList names;
    for (const auto &map : file.analogMaps) {
        if (map->config)
            names.append(file.Text(map->Name()));
    }
    m_editor->setChannelNames(names);
}

bool CAnaFormToolExpression::compileInto(CExpAnaMulti &program)
{
    program.Compile(m_pFrame->recordingForJob(), m_editor->toPlainText());
    listMessages();
    return ExpMessages.empty();
}

bool CAnaFormToolExpression::compile()
{
    CExpAnaMulti program;
    const bool clean = compileInto(program);
    m_tabs->setCurrentWidget(m_messages);
    return clean;
}

void CAnaFormToolExpression::listMessages()
{
    m_messages->clear();
    QList<QTextEdit::ExtraSelection> marks;
    if (ExpMessages.empty())
        m_messages->addItem(QCoreApplication::translate("CExpAnaMulti", "No Error!"));
    const QTextDocument *document = m_editor->document();
    const int end = std::max(0, document->characterCount() - 1);
    for (const auto &[position, text] : ExpMessages) {
        const int at = std::clamp(position, 0, end);
        const QTextBlock block = document->findBlock(at);
        auto *item = new QListWidgetItem(
            QStringLiteral("%1:%2  %3").arg(block.blockNumber() + 1).arg(at - block.position() + 1).arg(text),
            m_messages);
        item->setData(Qt::UserRole, at);
        QTextEdit::ExtraSelection mark;
        mark.format.setBackground(QColor(0xFF, 0xE0, 0xE0));
        mark.format.setProperty(QTextFormat::FullWidthSelection, true);
        mark.cursor = QTextCursor(m_editor->document());
        mark.cursor.setPosition(at);
        marks.append(mark);
    }
    m_editor->setExtraSelections(marks);
}

void CAnaFormToolExpression::jumpTo(int position)
{
    QTextCursor cursor = m_editor->textCursor();
    cursor.setPosition(std::clamp(position, 0, std::max(0, m_editor->document()->characterCount() - 1)));
    m_editor->setTextCursor(cursor);
    m_editor->ensureCursorVisible();
    m_editor->setFocus();
}

void CAnaFormToolExpression::slot_msgClicked(QListWidgetItem *item)
{
    if (item && item->data(Qt::UserRole).isValid())
        jumpTo(item->data(Qt::UserRole).toInt());
}

bool CAnaFormToolExpression::run()
{
    // A job may be writing a channel that the script would read.
    if (refuseWhileBusy())
        return false;
    CExpAnaMulti program;
    if (!compileInto(program)) {
        m_tabs->setCurrentWidget(m_messages);
        QMessageBox::warning(this, QString(), tr("Please Remove The Errors and Retry!"));
        return false;
    }
    program.Evaluate();
    const std::vector<ExpLogLine> lines = program.TakeResults();
    // An evaluation that ran out of memory reports it among the messages.
    if (!ExpMessages.empty())
        listMessages();
    listResults(lines);
    std::vector<CChnMapAnalog *> channels;
    for (const ExpLogLine &line : lines) {
        if (line.channel)
            channels.push_back(line.channel);
    }
    m_pFrame->showAddedChannels(channels);
    // The wave scrolls to the first new channel, so that the engineer sees what came out.
    if (!channels.empty())
        m_pFrame->nameView()->showChannel(channels.front());
    refreshChannelNames();
    m_tabs->setCurrentWidget(m_log);
    return true;
}

void CAnaFormToolExpression::listResults(const std::vector<ExpLogLine> &lines)
{
    m_log->clear();
    const QIcon channelIcon(QStringLiteral(":/images/VirChnCreateMenu.png"));
    for (const ExpLogLine &line : lines) {
        auto *item = new QListWidgetItem(line.text, m_log);
        if (line.channel) {
            item->setIcon(channelIcon);
            item->setData(Qt::UserRole, QVariant::fromValue(reinterpret_cast<quintptr>(line.channel)));
        }
    }
}

void CAnaFormToolExpression::slot_logDoubleClicked(QListWidgetItem *item)
{
    if (!item || !item->data(Qt::UserRole).isValid())
        return;
    // The channel may have been deleted since the run: it is shown only while it is there.
    const auto wanted = item->data(Qt::UserRole).value<quintptr>();
    for (const auto &map : m_pFrame->recording().analogMaps) {
        if (reinterpret_cast<quintptr>(map.get()) == wanted) {
            m_pFrame->nameView()->showChannel(map.get());
            return;
        }
    }
}

void CAnaFormToolExpression::slot_btnCompile()
{
    compile();
}

void CAnaFormToolExpression::slot_btnRun()
{
    run();
}

void CAnaFormToolExpression::slot_treeCurrentChanged(QTreeWidgetItem *item)
{
    const int row = item ? item->data(0, RoleRow).toInt() : -1;
    if (row < 0) {
        m_help->clear();
        return;
    }
    const ExpFunc &func = ExpFunctionGroups()[size_t(item->data(0, RoleGroup).toInt())].rows[size_t(row)];
    m_help->setPlainText(
        QStringLiteral("%1   %2\n%3").arg(QString::fromLatin1(func.args), func.title, func.help));
}

void CAnaFormToolExpression::slot_treeDoubleClicked(QTreeWidgetItem *item, int)
{
    if (!item || item->data(0, RoleRow).toInt() < 0)
        return;
    // The call goes in with its argument list selected, to be typed over.
    const QString call = item->text(0);
    QTextCursor cursor = m_editor->textCursor();
    const int start = cursor.selectionStart();
    cursor.insertText(call);
    const qsizetype open = call.indexOf(u'(');
    const qsizetype close = call.lastIndexOf(u')');
    if (open >= 0 && close > open) {
        cursor.setPosition(start + int(open) + 1);
        cursor.setPosition(start + int(close), QTextCursor::KeepAnchor);
    }
    m_editor->setTextCursor(cursor);
    m_editor->setFocus();
}

QStringList CAnaFormToolExpression::scriptLines() const
{
    QStringList lines;
    for (const QString &line : m_editor->toPlainText().split(u'\n')) {
        // The extension file keeps no blank lines and no edge blanks.
        const QString trimmed = line.trimmed();
        if (!trimmed.isEmpty())
            lines.append(trimmed);
    }
    return lines;
}

void CAnaFormToolExpression::storeExpressionLines()
{
    CCmtd99File &file = m_pFrame->recordingForJob();
    QList<QByteArray> lines;
    for (const QString &line : scriptLines())
        lines.append(EncodeText(line, file.codecName));
    if (lines == file.expressionLines)
        return;
    file.expressionLines = lines;
    if (!m_pFrame->isModified())
        m_pFrame->setModified(true);
}

void CAnaFormToolExpression::slot_textChanged()
{
    // The marks of the last compile no longer stand where the text moved.
    m_editor->setExtraSelections({});
    if (!m_loading)
        storeExpressionLines();
}

bool CAnaFormToolExpression::saveScript(const QString &path, QString &error) const
{
    QByteArray bytes = m_editor->toPlainText().toUtf8();
    bytes.replace("\n", "\r\n");
    // Every line ends; the reader takes the last line end off again.
    if (!bytes.isEmpty())
        bytes += "\r\n";
    return WriteFileSafely(path, bytes, &error);
}

bool CAnaFormToolExpression::openScript(const QString &path, QString &error)
{
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly)) {
        error = tr("Could not read %1: %2").arg(QFileInfo(path).fileName(), in.errorString());
        return false;
    }
    QString text = decodeScript(in.readAll());
    if (text.endsWith(u'\n'))
        text.chop(1);
    // One step of the editor's undo, so that a script opened by mistake can be taken back.
    QTextCursor cursor(m_editor->document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    m_editor->moveCursor(QTextCursor::Start);
    return true;
}

void CAnaFormToolExpression::slot_btnOpen()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Open Expression Script"), lastScriptFolder,
                                                      tr("Expression Script(*.tef)"));
    if (path.isEmpty())
        return;
    lastScriptFolder = QFileInfo(path).absolutePath();
    QString error;
    if (!openScript(path, error))
        QMessageBox::warning(this, QString(), error);
}

void CAnaFormToolExpression::slot_btnSave()
{
    QString path = QFileDialog::getSaveFileName(this, tr("Save Expression Script"), lastScriptFolder,
                                                tr("Expression Script(*.tef)"));
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QStringLiteral(".tef");
    lastScriptFolder = QFileInfo(path).absolutePath();
    QString error;
    if (!saveScript(path, error))
        QMessageBox::warning(this, QString(), error);
}
