#pragma once

#include "unitsuggest.h"

#include <QDialog>

class CCmtd99File;
class QTableWidget;

// The proposed plant units of a recording that came without them: each row can be taken
// (checked), edited in the unit setup before it is taken, or left out.
class CUnitSuggestDialog : public QDialog
{
    Q_OBJECT

public:
    CUnitSuggestDialog(const CCmtd99File &file, std::vector<UnitSuggestion> suggestions,
                       QWidget *parent = nullptr);

    // The checked proposals, as edited.
    std::vector<std::unique_ptr<CmtdInfTrwk_Unit>> takeAccepted();
    QTableWidget *table() const { return m_table; }
    // Opens the unit setup on a row's proposal; true when the engineer kept the change.
    bool editRow(int row);

private:
    void fillRow(int row);

    const CCmtd99File &m_file;
    std::vector<UnitSuggestion> m_suggestions;
    QTableWidget *m_table = nullptr;
};
