// The expression editor: messages with their places, the refusal to run a faulty script, a run
// whose channel joins the wave, script files, and the script the recording keeps.

#include "anaformtoolexpression.h"
#include "cmtdchildcontainer.h"
#include "expeditor.h"
#include "frametestcase.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextLayout>
#include <QTreeWidget>

#include <numbers>

namespace {

CAnaFormToolExpression *openEditor(CCmtdChildFrame *frame)
{
    frame->showAnaForm(3);
    return qobject_cast<CAnaFormToolExpression *>(frame->anaContainer()->form(3));
}

QStringList texts(const QListWidget *list)
{
    QStringList out;
    for (int i = 0; i < list->count(); ++i)
        out.append(list->item(i)->text());
    return out;
}

int rowOf(CCmtdChildFrame *frame, const CChnMapBase *channel)
{
    const auto &rows = frame->waveView()->rows;
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].channels.contains(const_cast<CChnMapBase *>(channel)))
            return int(i);
    }
    return -1;
}

// The format the highlighter gave the character at `position` of the editor's first line.
QTextCharFormat formatAt(CExpEditor *editor, int position)
{
    const QTextBlock block = editor->document()->firstBlock();
    for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
        if (position >= range.start && position < range.start + range.length)
            return range.format;
    }
    return {};
}

} // namespace

class ExpFormTest : public FrameTestCase
{
    Q_OBJECT

private Q_SLOTS:
    // A script typed is a change of the recording; the tests close without the question.
    void cleanup()
    {
        for (CMdiChildFrame *child : m_main->children()) {
            if (auto *frame = qobject_cast<CCmtdChildFrame *>(child))
                frame->setModified(false);
        }
        FrameTestCase::cleanup();
    }

    // The picture of the user guide (tools/screenshots.sh); skipped without VELDRIX_SCREENSHOTS.
    void screenshotsForTheGuide()
    {
        GUIDE_PICTURES_OR_SKIP(folder);
        CCmtdChildFrame *frame = open(QStringLiteral(VELDRIX_DEMO_DIR "/demo_line_fault.cfg"));
        QVERIFY(frame);
        frame->showMaximized();
        CAnaFormToolExpression *form = openEditor(frame);
        QVERIFY(form);
        form->editor()->setPlainText(QStringLiteral(
            "// Zero sequence of the line voltages and the three-phase active power\n"
            "\"U0\" = seq_e(\"Ua\", \"Ub\", \"Uc\", 0)\n"
            "\"P\" = power_p(\"Ua\", \"Ia\") + power_p(\"Ub\", \"Ib\") + power_p(\"Uc\", \"Ic\")\n"
            "k = SQRT3 * 220 / 100"));
        QVERIFY(form->run());
        QTreeWidgetItem *sequence = form->functionTree()->topLevelItem(7);
        sequence->setExpanded(true);
        form->functionTree()->setCurrentItem(sequence->child(0));
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/expression-editor.png")));
    }

    void functionTreeHelpInsertAndChannelCompletion()
    {
        CCmtdChildFrame *frame = open(writeSineRecording(m_dir, "tree", 200));
        QVERIFY(frame);
        CAnaFormToolExpression *form = openEditor(frame);
        QVERIFY(form);
        QTreeWidget *tree = form->functionTree();
        QCOMPARE(tree->topLevelItemCount(), 12);
        int rows = 0;
        for (int g = 0; g < 12; ++g)
            rows += tree->topLevelItem(g)->childCount();
        QCOMPARE(rows, 63);
        QCOMPARE(tree->topLevelItem(0)->text(0), QStringLiteral("Math"));
        QCOMPARE(tree->topLevelItem(11)->text(0), QStringLiteral("Other"));
        QTreeWidgetItem *sine = tree->topLevelItem(0)->child(0);
        QCOMPARE(sine->text(0), QStringLiteral("sin(x)"));
        tree->setCurrentItem(sine);
        QVERIFY(form->helpView()->toPlainText().contains(
            QStringLiteral("[x] is a constant or an expression that return a constant, unit is Radian.")));

        // A double click puts the call in with its argument selected, to be typed over.
        CExpEditor *editor = form->editor();
        editor->setPlainText(QStringLiteral("y = "));
        editor->moveCursor(QTextCursor::End);
        Q_EMIT tree->itemDoubleClicked(sine, 0);
        QCOMPARE(editor->toPlainText(), QStringLiteral("y = sin(x)"));
        QCOMPARE(editor->textCursor().selectedText(), QStringLiteral("x"));

        // A quote opens the channel list; taking a name closes the quote.
        editor->clear();
        editor->setFocus();
        QTest::keyClicks(editor, QStringLiteral("\"u"));
        QVERIFY(editor->completer()->popup()->isVisible());
        QCOMPARE(editor->completer()->completionCount(), 3);
        editor->insertCompletion(QStringLiteral("UB"));
        QCOMPARE(editor->toPlainText(), QStringLiteral("\"UB\""));
        QVERIFY(!editor->completer()->popup()->isVisible());

        // Channels, unknown names, functions and constants each have their colour.
        editor->setPlainText(QStringLiteral("\"UA\" * PI + cos(\"Q\") // x"));
        CExpHighlighter *colours = editor->highlighter();
        QCOMPARE(formatAt(editor, 1), colours->format(CExpHighlighter::FormatChannel));
        QCOMPARE(formatAt(editor, 7), colours->format(CExpHighlighter::FormatConstant));
        QCOMPARE(formatAt(editor, 12), colours->format(CExpHighlighter::FormatFunction));
        QCOMPARE(formatAt(editor, 17), colours->format(CExpHighlighter::FormatResult));
        QCOMPARE(formatAt(editor, 23), colours->format(CExpHighlighter::FormatComment));
    }

    void compileListsMessagesAndRunRefuses()
    {
        CCmtdChildFrame *frame = open(writeSineRecording(m_dir, "faults", 200));
        QVERIFY(frame);
        CAnaFormToolExpression *form = openEditor(frame);
        QVERIFY(form);
        CExpEditor *editor = form->editor();
        // Line 2 opens a parenthesis it never closes: "(" at column 8 (script position 6 + 7),
        // and the name "sin(2" from column 5 (position 10).
        editor->setPlainText(QStringLiteral("x = 1\ny = sin(2"));
        QVERIFY(!form->compile());
        QCOMPARE(texts(form->messageList()),
                 QStringList({QStringLiteral("2:8  Error: [(] not match to [)]!"),
                              QStringLiteral("2:5  Error: Unknown variant name [sin(2]!")}));
        editor->moveCursor(QTextCursor::Start);
        form->slot_msgClicked(form->messageList()->item(0));
        QCOMPARE(editor->textCursor().position(), 13);
        form->slot_msgClicked(form->messageList()->item(1));
        QCOMPARE(editor->textCursor().position(), 10);

        // F7 compiles; a clean script says so.
        editor->setPlainText(QStringLiteral("x = 1"));
        editor->setFocus();
        QTest::keyClick(editor, Qt::Key_F7);
        QCOMPARE(texts(form->messageList()), QStringList{QStringLiteral("No Error!")});

        // A mere warning keeps the script from running, as does a job on the worker.
        const size_t channels = frame->recording().analogMaps.size();
        editor->setPlainText(QStringLiteral("\"V\" w = \"UA\""));
        QString said;
        pressWhenUp(&said, QStringLiteral("OK"));
        QVERIFY(!form->run());
        QCOMPARE(said, QStringLiteral("Please Remove The Errors and Retry!"));
        QCOMPARE(form->messageList()->count(), 1);
        QVERIFY(form->messageList()->item(0)->text().endsWith(
            QStringLiteral("Warning: [w] is unwanted before [=]!")));
        QCOMPARE(form->logList()->count(), 0);
        editor->setPlainText(QStringLiteral("\"V\" = \"UA\" * 2"));
        frame->document()->setBackgroundBit(CCmtdChildFrame::StateBusy, true);
        pressWhenUp(&said, QStringLiteral("OK"));
        QVERIFY(!form->run());
        frame->document()->setBackgroundBit(CCmtdChildFrame::StateBusy, false);
        QCOMPARE(said, QStringLiteral(
                           "A Background Service is Running Now, Please Retry this Operation for a moment!"));
        QCOMPARE(frame->recording().analogMaps.size(), channels);
    }

    void runAddsTheChannelToTheWave()
    {
        CCmtdChildFrame *frame = open(writeSineRecording(m_dir, "run", 200));
        QVERIFY(frame);
        CAnaFormToolExpression *form = openEditor(frame);
        QVERIFY(form);
        const size_t before = frame->recording().analogMaps.size();
        form->editor()->setPlainText(QStringLiteral("\"D\" = \"UA\" * 2 - 1\nk = 2 * 3"));
        form->editor()->setFocus();
        QTest::keyClick(form->editor(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(
            texts(form->logList()),
            QStringList({QStringLiteral("No Error!"), QStringLiteral("[D] Out a new Virtual Channel [D]!"),
                         QStringLiteral("[k] Result = 6.000000, Stored in [k]")}));
        QVERIFY(!form->logList()->item(1)->icon().isNull());
        QVERIFY(form->logList()->item(2)->icon().isNull());

        const CCmtd99File &file = frame->recording();
        QCOMPARE(file.analogMaps.size(), before + 1);
        CChnMapAnalog *d = file.analogMaps.back().get();
        QCOMPARE(file.Text(d->Name()), QStringLiteral("D"));
        QVERIFY(d->isVirtual);
        // Shown in a row of its own after the analog rows, above the status channel.
        const int row = rowOf(frame, d);
        QCOMPARE(row, rowOf(frame, file.analogMaps[2].get()) + 1);
        QVERIFY(!(d->flags & CChnMapBase::FlagHidden));
        QVERIFY(rowOf(frame, file.statusMaps[0].get()) > row);
        // Ua is 0.1 V per step of 1000·sin(2π·50·n/1000), rounded to the step.
        for (int n : {0, 5, 13, 15, 199}) {
            const float ua =
                float(std::lround(1000.0 * std::sin(2 * std::numbers::pi * 50.0 * n / 1000.0))) * 0.1f;
            QVERIFY2(std::abs(d->Value(n) - (ua * 2.0f - 1.0f)) < 1e-3f, qPrintable(QString::number(n)));
        }

        // Run again: the channel of that name is renewed in place, not doubled.
        form->editor()->setPlainText(QStringLiteral("\"D\" = \"UA\" * 0 + 7"));
        QVERIFY(form->run());
        QCOMPARE(file.analogMaps.size(), before + 1);
        QCOMPARE(file.analogMaps.back()->Value(40), 7.0f);
        QCOMPARE(rowOf(frame, file.analogMaps.back().get()), row);
    }

    void scriptFilesAndTheRecordingsScript()
    {
        const QString path = writeSineRecording(m_dir, "kept", 200);
        // The extension file of the recording brings a script along.
        QFile inf(m_dir.filePath(QStringLiteral("kept.inf")));
        QVERIFY(inf.open(QIODevice::WriteOnly));
        inf.write("[TRWK Expression]\r\nx = 1\r\n\"D\" = \"UA\" * x\r\n\r\n");
        inf.close();
        CCmtdChildFrame *frame = open(path);
        QVERIFY(frame);
        CAnaFormToolExpression *form = openEditor(frame);
        QVERIFY(form);
        CExpEditor *editor = form->editor();
        QCOMPARE(editor->toPlainText(), QStringLiteral("x = 1\n\"D\" = \"UA\" * x"));
        QVERIFY(!frame->isWindowModified());

        // Edits go back into the recording without blank lines or edge blanks.
        editor->setPlainText(QStringLiteral("y = 2\n\n   \"E\" = \"UB\" + y  \n"));
        QCOMPARE(frame->recording().expressionLines, QList<QByteArray>({"y = 2", "\"E\" = \"UB\" + y"}));
        QVERIFY(frame->isWindowModified());
        QVERIFY(frame->saveFile(path));
        QVERIFY(fileBytes(m_dir.filePath(QStringLiteral("kept.inf")))
                    .contains("[TRWK Expression]\r\ny = 2\r\n\"E\" = \"UB\" + y\r\n"));

        // A ".tef" keeps the script as typed, comments and all, and opens as one undo step.
        const QString script = QString::fromUtf8("// Σ of the phases\n\"S\" = \"UA\" + \"UB\" + \"UC\"\n");
        editor->setPlainText(script);
        const QString tef = m_dir.filePath(QStringLiteral("sum.tef"));
        QString error;
        QVERIFY(form->saveScript(tef, error));
        QCOMPARE(
            fileBytes(tef),
            QString::fromUtf8("// Σ of the phases\r\n\"S\" = \"UA\" + \"UB\" + \"UC\"\r\n\r\n").toUtf8());
        editor->setPlainText(QStringLiteral("z = 3"));
        QVERIFY(form->openScript(tef, error));
        QCOMPARE(editor->toPlainText(), script);
        editor->undo();
        QCOMPARE(editor->toPlainText(), QStringLiteral("z = 3"));
        QVERIFY(!form->openScript(m_dir.filePath(QStringLiteral("missing.tef")), error));
        QVERIFY(error.contains(QStringLiteral("missing.tef")));
    }
};

QTEST_MAIN(ExpFormTest)
#include "test_expform.moc"
