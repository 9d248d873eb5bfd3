#pragma once

#include <QDialog>

#include <memory>
#include <vector>

class CCmtd99File;
class CmtdInfTrwk_Unit;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QLineEdit;
class QListWidget;
class QTableWidget;
class QTabWidget;
struct ChannelRole;

// Setup of one plant unit: its name and number, the plant data of its kind, the channel of
// each role (pickers list only channels of the fitting class and phase unless the engineer
// asks for all), and its further analog and status channels. The dialog works on its own copy;
// `takeUnit` gives it away once the checks passed.
class CUnitSetupDialog : public QDialog
{
    Q_OBJECT

public:
    // `unit` is the copy to edit; `replacing` the recording's unit it will replace (null for a
    // new one), so that it may keep its name.
    CUnitSetupDialog(const CCmtd99File &file, std::unique_ptr<CmtdInfTrwk_Unit> unit,
                     const CmtdInfTrwk_Unit *replacing, QWidget *parent = nullptr);
    ~CUnitSetupDialog() override;

    std::unique_ptr<CmtdInfTrwk_Unit> takeUnit();
    // The edited copy as it stands (for tests and for the suggestion list).
    const CmtdInfTrwk_Unit &unit() const { return *m_unit; }
    QLineEdit *nameEdit() const { return m_name; }
    QTableWidget *rolesTable() const { return m_roles; }
    QLineEdit *numberEdit(const char *label) const;
    QCheckBox *allChannelsBox() const { return m_allChannels; }

    void accept() override;

private:
    struct NumberField
    {
        const char *label;
        QLineEdit *edit;
        float *target;
    };

    QWidget *makeGeneralPage();
    void addNumber(QFormLayout *form, const char *label, const char *unit, float *target);
    void addKindFields(QFormLayout *form);
    void addLineFields(QFormLayout *form);
    void addTransformerFields(QFormLayout *form);
    void addPowerFields(QFormLayout *form);
    void addExciterFields(QFormLayout *form);
    // The unit this one works with (a generator's main transformer, an exciter's generator).
    template <typename Units>
    void addPartnerChoice(QFormLayout *form, const QString &label, const Units &units,
                          const QByteArray &current);
    QWidget *makeRolesPage();
    void fillRolePickers();
    void readRolePickers();
    QWidget *makeListsPage();
    void fillStatusList(int which);
    // Reads every widget back into the copy; false with the reasons when a number is not one.
    bool collect(QStringList *problems);

    const CCmtd99File &m_file;
    std::unique_ptr<CmtdInfTrwk_Unit> m_unit;
    const CmtdInfTrwk_Unit *m_replacing;
    std::vector<ChannelRole> m_roleList;
    std::vector<NumberField> m_numbers;
    std::vector<QWidget *> m_kindWidgets; // collected by the kind's own step
    QTabWidget *m_tabs = nullptr;
    QLineEdit *m_name = nullptr;
    QLineEdit *m_devId = nullptr;
    QLineEdit *m_sysId = nullptr;
    QComboBox *m_objectType = nullptr;
    QTableWidget *m_roles = nullptr;
    QCheckBox *m_allChannels = nullptr;
    QListWidget *m_analogList = nullptr;
    QListWidget *m_statusList = nullptr;
    QComboBox *m_statusWhich = nullptr;
    int m_statusShown = 0;
    // Transformer and generator widgets that are not plain numbers.
    QComboBox *m_windings = nullptr;
    QComboBox *m_sideText[3] = {};
    QLineEdit *m_sideKv[3] = {};
    QComboBox *m_sideBranches[3] = {};
    QLineEdit *m_selfComp = nullptr;
    QComboBox *m_branches[3] = {};
    QComboBox *m_excitation = nullptr;
    QComboBox *m_igtDir = nullptr;
    QComboBox *m_partner = nullptr; // the generator's transformer, the exciter's generator
    QCheckBox *m_reversed = nullptr;
    QCheckBox *m_reversed2 = nullptr;
};
