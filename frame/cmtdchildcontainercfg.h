#pragma once

#include "channeledit.h"

#include "cmtdchildcontainer.h"

class CCmtd99File;
class CmtdInfTrwk_Unit;
class QComboBox;
class QLabel;
class QStackedWidget;
class QTabBar;
class QTableWidget;
class QTableWidgetItem;
class QToolBar;

// The configuration page of a document frame: four tables of what was read from the recording's
// files — analog channels, status channels, primary devices, and the readers' messages with
// their line numbers, so that the engineer sees what was repaired or refused. The channel
// fields that describe the plant (names, phases, components, units, ratios, classes, kinds)
// are edited in place; the frame takes or refuses each edit.
class CCmtdChildContainerCfg : public CCmtdChildContainer
{
    Q_OBJECT

public:
    explicit CCmtdChildContainerCfg(CCmtdChildFrame *frame);

    // Fills every table from the recording.
    void showRecording(const CCmtd99File &file);
    int pageCount() const;
    QTableWidget *table(int page) const;

Q_SIGNALS:
    // The engineer chose another text encoding for the recording.
    void codecChosen(const QByteArray &codec);
    // The engineer typed a new value into a channel's cell (row = position in its kind).
    void channelFieldEdited(bool analog, int position, ChannelField field, const QString &text);
    // The engineer asked for a new unit of a kind, or to edit, copy or delete one.
    void unitAddRequested(int kind);
    void unitEditRequested(const CmtdInfTrwk_Unit *unit);
    void unitCopyRequested(const CmtdInfTrwk_Unit *unit);
    void unitDeleteRequested(const CmtdInfTrwk_Unit *unit);
    void suggestUnitsRequested();

protected:
    void changeEvent(QEvent *event) override;

private:
    // The field an editable column holds; false for a column that shows only.
    static bool analogColumnField(int column, ChannelField *field);
    static bool statusColumnField(int column, ChannelField *field);
    void installChoiceEditors();
    void reportEdit(bool analog, QTableWidgetItem *item);
    QWidget *makeDevicesPage(QWidget *parent);
    // The unit of the devices table's current row; null when none is chosen.
    const CmtdInfTrwk_Unit *currentUnit() const;

    void fillRecording(const CCmtd99File &file);
    // One row per plant unit: kind, number, name, its data, the channels it uses.
    void showDevices(const CCmtd99File &file);
    void retranslate();

    QToolBar *m_toolBar = nullptr;
    QTabBar *m_tabs = nullptr;
    QStackedWidget *m_stack = nullptr;
    QTableWidget *m_analog = nullptr;
    QTableWidget *m_status = nullptr;
    QTableWidget *m_devices = nullptr;
    QTableWidget *m_messages = nullptr;
    bool m_filling = false; // the tables are being filled from the recording, not edited
    QLabel *m_codecLabel = nullptr;
    QLabel *m_summary = nullptr;
    QComboBox *m_codec = nullptr;
    const CCmtd99File *m_file = nullptr;
};
