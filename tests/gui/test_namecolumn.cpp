// The channel name column: the values it shows at the cursors, the entries of its channel
// menu and what rearranging rows does to them.

#include "chnmap.h"
#include "cmtdchildframe.h"
#include "cmtdviewananame.h"
#include "cmtdviewanawave.h"
#include "frametestcase.h"
#include "mainframe.h"

#include <QAction>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QTest>
#include <cstdio>

class NameColumnTest : public FrameTestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FrameTestCase::init();
        m_frame = open(writeSineRecording(m_dir, "sine", 1000));
        QVERIFY(m_frame);
    }

    // The point in the middle of a channel's line, in document coordinates.
    QPoint lineOf(const CChnMapBase *channel)
    {
        CCmtdViewAnaWave *wave = m_frame->waveView();
        for (const CWaveRow &row : wave->rows) {
            const int index = static_cast<int>(row.channels.indexOf(const_cast<CChnMapBase *>(channel)));
            if (index < 0)
                continue;
            int shown = 0;
            for (const CChnMapBase *map : row.channels)
                shown += !(map->flags & CChnMapBase::FlagHidden);
            const int line = m_frame->nameView()->lineHeight();
            return QPoint(10,
                          wave->m_nMarginT + 3 + row.centerY - shown * line / 2 + index * line + line / 2);
        }
        return QPoint();
    }

    QList<QAction *> menuFor(const CChnMapBase *channel)
    {
        QMenu *menu = m_frame->nameView()->buildMenu(lineOf(channel));
        QList<QAction *> actions = menu ? menu->actions() : QList<QAction *>();
        delete menu;
        return actions;
    }

    void namesShowWhileTheLoadRuns()
    {
        // UA's line is painted in its colour, with the column's background right of the text
        // and the read-out band at the top. A load that has five points in shows the names
        // (without values); four show nothing.
        CCmtdViewAnaWave *wave = m_frame->waveView();
        CCmtdViewAnaName *names = m_frame->nameView();
        CCmtdDocument *document = m_frame->document();
        const QRgb pen = m_frame->recording().analogMaps[0]->colour;
        const QPoint line = lineOf(m_frame->recording().analogMaps[0].get());
        QImage image;
        auto inkOnTheLine = [&](int from, int to) {
            image = QImage(names->width(), wave->m_nMarginT + 3 + wave->m_nDocH, QImage::Format_ARGB32);
            QPainter painter(&image);
            names->drawContents(painter, image.rect());
            painter.end();
            int ink = 0;
            for (int y = from; y <= to; ++y)
                for (int x = 0; x < image.width(); ++x)
                    ink += image.pixel(x, y) == pen;
            return ink;
        };
        const int half = names->lineHeight() / 2;
        QVERIFY(inkOnTheLine(line.y() - half, line.y() + half - 1) > 10);
        QCOMPARE(image.pixel(image.width() - 4, line.y()), names->colour(1));
        QCOMPARE(image.pixel(image.width() - 4, 1), names->colour(3));
        document->setBackgroundBit(CCmtdDocument::StateLoading, true);
        wave->setDrawnExtent(5, false);
        QVERIFY(inkOnTheLine(line.y(), line.y()) > 0);
        QCOMPARE(names->lineText(m_frame->recording().analogMaps[0].get()).contains(QStringLiteral("UA")),
                 true);
        wave->setDrawnExtent(4, false);
        QCOMPARE(inkOnTheLine(line.y(), line.y()), 0);
        document->setBackgroundBit(CCmtdDocument::StateLoading, false);
        wave->setDrawnExtent(1000, false);
    }

    void valuesFollowTheCursors()
    {
        CCmtdViewAnaWave *wave = m_frame->waveView();
        CCmtdViewAnaName *names = m_frame->nameView();
        const CChnMapBase *ua = m_frame->recording().analogMaps[0].get();
        wave->setCursorT1(500);
        wave->setCursorT2(505);
        // The fundamental's effective value of a 100 V peak sine, at both cursors.
        QCOMPARE(names->lineText(ua), QStringLiteral("  1:[T1=70.712V][T2=70.712V] UA"));
        m_frame->action(CCmtdChildFrame::ActValAng)->trigger();
        const QString withAngle = names->lineText(ua);
        // Five samples on, a quarter cycle later: the angle has turned by 90 degrees.
        QVERIFY2(withAngle.contains(QStringLiteral("(Ang)0.000(Deg)")) ||
                     withAngle.contains(QStringLiteral("(Ang)-0.000(Deg)")),
                 qPrintable(withAngle));
        QVERIFY2(withAngle.contains(QStringLiteral("(Ang)90.000(Deg)")), qPrintable(withAngle));
        m_frame->action(CCmtdChildFrame::ActValAng)->trigger();
        m_frame->action(CCmtdChildFrame::ActNameAhead)->trigger();
        QCOMPARE(names->lineText(ua), QStringLiteral("  1:UA [T1=70.712V][T2=70.712V]"));
        const CChnMapBase *trip = m_frame->recording().statusMaps[0].get();
        wave->setCursorT2(200);
        QCOMPARE(names->lineText(trip), QStringLiteral("  1:Trip [T1=1][T2=1]"));
        wave->setCursorT1(100);
        QCOMPARE(names->lineText(trip), QStringLiteral("  1:Trip [T1=0][T2=1]"));
    }

    void menuEntriesFollowTheirConditions()
    {
        CCmtdViewAnaName *names = m_frame->nameView();
        const CCmtd99File &file = m_frame->recording();
        const CChnMapBase *ua = file.analogMaps[0].get();
        const CChnMapBase *ub = file.analogMaps[1].get();
        QList<QAction *> entries = menuFor(ua);
        // Nothing picked: no overlap, no insert; a channel in its own row: no restore.
        QVERIFY(entries.contains(names->menuAction(CCmtdViewAnaName::MenuPick)));
        QVERIFY(!entries.contains(names->menuAction(CCmtdViewAnaName::MenuOver)));
        QVERIFY(!entries.contains(names->menuAction(CCmtdViewAnaName::MenuInsert)));
        QVERIFY(!entries.contains(names->menuAction(CCmtdViewAnaName::MenuComeback)));
        QVERIFY(entries.contains(names->menuAction(CCmtdViewAnaName::MenuVertExt)));
        QVERIFY(!names->menuAction(CCmtdViewAnaName::MenuSetAC)->isEnabled()); // shown, not yet working

        // Pick Ua, then overlap it on Ub.
        menuFor(ua);
        names->menuAction(CCmtdViewAnaName::MenuPick)->trigger();
        entries = menuFor(ub);
        QVERIFY(entries.contains(names->menuAction(CCmtdViewAnaName::MenuOver)));
        names->menuAction(CCmtdViewAnaName::MenuOver)->trigger();
        CCmtdViewAnaWave *wave = m_frame->waveView();
        QCOMPARE(int(wave->rows.size()), 3);
        QCOMPARE(wave->rows[0].channels.size(), 2);
        // Ua now stands in Ub's row, not its own: restore is offered, and puts it back first.
        entries = menuFor(ua);
        QVERIFY(entries.contains(names->menuAction(CCmtdViewAnaName::MenuComeback)));
        names->menuAction(CCmtdViewAnaName::MenuComeback)->trigger();
        QCOMPARE(int(wave->rows.size()), 4);
        QCOMPARE(wave->rows[0].channels.first(), ua);

        // A status channel has no analog entries.
        entries = menuFor(file.statusMaps[0].get());
        QVERIFY(!entries.contains(names->menuAction(CCmtdViewAnaName::MenuVertExt)));
        QVERIFY(entries.contains(names->menuAction(CCmtdViewAnaName::MenuSetSC)));
    }

    void insertKeepsRowsConsistent()
    {
        CCmtdViewAnaName *names = m_frame->nameView();
        CCmtdViewAnaWave *wave = m_frame->waveView();
        const CCmtd99File &file = m_frame->recording();
        const CChnMapBase *uc = file.analogMaps[2].get();
        menuFor(uc);
        names->menuAction(CCmtdViewAnaName::MenuPick)->trigger();
        // Insert Uc behind Ua: Ua, Uc, Ub, Trip.
        QVERIFY(menuFor(file.analogMaps[0].get()).contains(names->menuAction(CCmtdViewAnaName::MenuInsert)));
        names->menuAction(CCmtdViewAnaName::MenuInsert)->trigger();
        QCOMPARE(int(wave->rows.size()), 4);
        QCOMPARE(wave->rows[1].channels.first(), uc);
        QCOMPARE(wave->rows[2].channels.first(), file.analogMaps[1].get());
        QVERIFY(!names->picked().channel);
        // Hide takes the row's height away.
        menuFor(uc);
        names->menuAction(CCmtdViewAnaName::MenuHide)->trigger();
        QVERIFY(wave->rows[1].centerY < 0);
        m_frame->action(CCmtdChildFrame::ActChnShowAll)->trigger();
        QVERIFY(wave->rows[1].centerY > 0);
    }

    void waveViewStatusRoundTrip()
    {
        CCmtdViewAnaWave *wave = m_frame->waveView();
        const CCmtd99File &file = m_frame->recording();
        wave->groupOverlap();
        wave->setHorzScale(3.0f);
        wave->setCursorT1(321);
        wave->setCursorT2(654);
        file.analogMaps[1]->colour = 0xff123456;
        file.analogMaps[2]->vScale = 2.5f;
        file.statusMaps[0]->flags |= CChnMapBase::FlagDots;
        m_frame->action(CCmtdChildFrame::ActValAng)->trigger();
        const QByteArray path = m_dir.filePath(QStringLiteral("view.wvs")).toLocal8Bit();
        QVERIFY(wave->saveStatus(path.constData()));

        // Disturb everything, then read the file back.
        wave->buildRows(false);
        wave->setHorzScale(-1.0f);
        wave->setCursorT1(0);
        file.analogMaps[1]->colour = 0xff000000;
        file.analogMaps[2]->vScale = 1.0f;
        file.statusMaps[0]->flags &= ~CChnMapBase::FlagDots;
        m_frame->action(CCmtdChildFrame::ActValAng)->trigger();
        QVERIFY(wave->loadStatus(path.constData()));
        QCOMPARE(wave->hScale, 3.0f);
        QCOMPARE(wave->cursorT1, 321);
        QCOMPARE(wave->cursorT2, 654);
        QCOMPARE(file.analogMaps[1]->colour, 0xff123456u);
        QCOMPARE(file.analogMaps[2]->vScale, 2.5f);
        QVERIFY(file.statusMaps[0]->flags & CChnMapBase::FlagDots);
        QVERIFY(m_frame->document()->displayFlags.testFlag(CCmtdDocument::ValueAngle));
        QCOMPARE(int(wave->rows.size()), 2);
        QCOMPARE(wave->rows[0].channels.size(), 3);
    }

    void waveViewStatusOfAnotherRecording()
    {
        CCmtdViewAnaWave *wave = m_frame->waveView();
        const QByteArray path = m_dir.filePath(QStringLiteral("other.wvs")).toLocal8Bit();
        FILE *out = std::fopen(path.constData(), "w");
        std::fputs("[Public]\n  PointNum=999\n  ACNum=3\n  SCNum=1\n  curT1=7\n", out);
        std::fclose(out);
        wave->setCursorT1(50);
        QVERIFY(!wave->loadStatus(path.constData()));
        QCOMPARE(wave->cursorT1, 50);

        // Entries of channels the recording lacks are dropped; the rest is taken.
        out = std::fopen(path.constData(), "w");
        std::fputs("[Public]\n  PointNum=1000\n  ACNum=3\n  SCNum=1\n  curT1=7\n"
                   "[ACh]\n  idx=9\n  clr=0xff00ff00\n  vScale=2\n"
                   "[ACh]\n  idx=1\n  clr=0xff0000ff\n  vScale=0.5\n"
                   "[Axis]\nkey=11\nChMap=A1, A9, S1, \n",
                   out);
        std::fclose(out);
        QVERIFY(wave->loadStatus(path.constData()));
        QCOMPARE(wave->cursorT1, 7);
        QCOMPARE(m_frame->recording().analogMaps[0]->colour, 0xff0000ffu);
        QCOMPARE(m_frame->recording().analogMaps[0]->vScale, 1.0f); // below 1 is ignored
        QCOMPARE(int(wave->rows.size()), 1);
        QCOMPARE(wave->rows[0].channels.size(), 2);
    }

private:
    CCmtdChildFrame *m_frame = nullptr;
};

QTEST_MAIN(NameColumnTest)
#include "test_namecolumn.moc"
