#pragma once

#include <QStyledItemDelegate>

#include <utility>
#include <vector>

// A table cell edited by picking one of a fixed list: the cell shows the code that the file
// keeps ("Jump_A", "TV", "P"), the list shows each code with its meaning. The picked code is
// written once, as the item's user data, so that one edit is one change.
class ChoiceDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using Choice = std::pair<QString, QString>; // code, meaning
    ChoiceDelegate(std::vector<Choice> choices, QObject *parent);

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

private:
    QString currentCode(const QModelIndex &index) const;

    std::vector<Choice> m_choices;
};
