#pragma once

#include "anaformbase.h"

#include <QStringList>

#include <vector>

class CExpAnaMulti;
class CExpEditor;
struct ExpLogLine;
class QListWidget;
class QListWidgetItem;
class QPlainTextEdit;
class QTabWidget;

// The expression editor (form 3): the engineer writes a script over the recording's channels,
// compiles it to see every fault with its place, and runs it to get numbers and new virtual
// channels, which join the wave view. The function library stands beside the editor as a tree
// with its help. Scripts are kept in ".tef" files, and the recording keeps the script in its
// extension file.
class CAnaFormToolExpression : public CAnaFormBase
{
    Q_OBJECT

public:
    CAnaFormToolExpression(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);

    void retranslateTexts() override;
    bool activate() override;
    void forgetChannel(const CChnMapBase *channel) override;

    // Compiles the editor's script and lists the messages; true when there is none.
    bool compile();
    // Compiles, refuses on any message, and otherwise evaluates, lists the result log and
    // shows the new channels in the wave; true when the script ran.
    bool run();
    // Writes the script as a ".tef" file; reads one into the editor (undoable).
    bool saveScript(const QString &path, QString &error) const;
    bool openScript(const QString &path, QString &error);
    // Moves the editor's cursor to a character position of the script.
    void jumpTo(int position);

    CExpEditor *editor() const { return m_editor; }
    QListWidget *messageList() const { return m_messages; }
    QListWidget *logList() const { return m_log; }
    QTreeWidget *functionTree() const { return m_tree; }
    QPlainTextEdit *helpView() const { return m_help; }

    void slot_btnOpen();
    void slot_btnSave();
    void slot_btnCompile();
    void slot_btnRun();
    void slot_msgClicked(QListWidgetItem *item);
    void slot_logDoubleClicked(QListWidgetItem *item);
    void slot_treeCurrentChanged(QTreeWidgetItem *item);
    void slot_treeDoubleClicked(QTreeWidgetItem *item, int column);
    void slot_textChanged();

private:
    void buildToolBar(QBoxLayout *column);
    void fillFunctionTree();
    void refreshChannelNames();
    // The messages of the last compile into the list; the lines that hold one are marked.
    void listMessages();
    void listResults(const std::vector<ExpLogLine> &lines);
    bool compileInto(CExpAnaMulti &program);
    // The recording's script lines from the editor's text; the recording is modified when
    // they changed.
    void storeExpressionLines();
    QStringList scriptLines() const;

    CExpEditor *m_editor;
    QTreeWidget *m_tree;
    QPlainTextEdit *m_help;
    QTabWidget *m_tabs;
    QListWidget *m_messages;
    QListWidget *m_log;
    QToolButton *m_btnOpen = nullptr;
    QToolButton *m_btnSave = nullptr;
    QToolButton *m_btnCompile = nullptr;
    QToolButton *m_btnRun = nullptr;
    bool m_loaded = false;  // the recording's script is in the editor
    bool m_loading = false; // the editor is being filled from the recording
};
