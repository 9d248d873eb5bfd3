#include "choicedelegate.h"

#include <QComboBox>

ChoiceDelegate::ChoiceDelegate(std::vector<Choice> choices, QObject *parent)
    : QStyledItemDelegate(parent), m_choices(std::move(choices))
{}

QWidget *ChoiceDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                      const QModelIndex &) const
{
    auto *combo = new QComboBox(parent);
    for (const Choice &choice : m_choices) {
        combo->addItem(choice.second.isEmpty() || choice.second == choice.first
                           ? choice.first
                           : QStringLiteral("%1 — %2").arg(choice.first, choice.second),
                       choice.first);
    }
    return combo;
}

QString ChoiceDelegate::currentCode(const QModelIndex &index) const
{
    // The cell shows either the code or, where that reads better, the meaning.
    const QString shown = index.data(Qt::DisplayRole).toString();
    for (const Choice &choice : m_choices) {
        if (shown.compare(choice.first, Qt::CaseInsensitive) == 0 ||
            (!shown.isEmpty() && shown == choice.second))
            return choice.first;
    }
    return shown;
}

void ChoiceDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *combo = static_cast<QComboBox *>(editor);
    const int at = combo->findData(currentCode(index), Qt::UserRole, Qt::MatchFixedString);
    combo->setCurrentIndex(at >= 0 ? at : 0);
}

void ChoiceDelegate::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    const auto *combo = static_cast<QComboBox *>(editor);
    const QString code = combo->currentData().toString();
    if (code.compare(currentCode(index), Qt::CaseInsensitive) != 0)
        model->setData(index, code, Qt::UserRole);
}
