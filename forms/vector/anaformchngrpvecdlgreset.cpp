#include "anaformchngrpvecdlgreset.h"
#include "dialogbuttons.h"

#include "anaformbase.h"
#include "chnmap.h"
#include "chntext.h"
#include "cmtd99file.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace {

CChnMapAnalog *channelOf(const QListWidgetItem *item)
{
    return reinterpret_cast<CChnMapAnalog *>(item->data(Qt::UserRole).value<quintptr>());
}

} // namespace

CAnaFormChnGrpVecDlgReset::CAnaFormChnGrpVecDlgReset(const CCmtd99File &file, uint32_t displayFlags,
                                                     const std::vector<CChnMapAnalog *> &chosen,
                                                     QWidget *parent)
    : QDialog(parent), m_displayFlags(displayFlags), m_left(new QListWidget(this)),
      m_right(new QListWidget(this))
{
    setWindowTitle(tr("Choose Channels for [Vector Analysis]"));
    setWindowIcon(QIcon(QStringLiteral(":/images/WaveAnaVec.png")));
    for (const auto &map : file.analogMaps) {
        if (map->Class() == ClassACV || map->Class() == ClassACC)
            m_all.push_back(map.get());
    }
    m_left->setObjectName(QStringLiteral("listOffered"));
    m_right->setObjectName(QStringLiteral("listChosen"));
    for (CChnMapAnalog *chn : chosen)
        m_right->addItem(makeItem(chn, displayFlags));
    refillOffered();

    auto *reset = new QPushButton(tr("Re-choose all"), this);
    auto *top = new QPushButton(tr("Move Top"), this);
    QDialogButtonBox *buttons = OkCancelButtons(this);
    auto *grid = new QGridLayout(this);
    grid->addWidget(new QLabel(tr("Channels to Choose"), this), 0, 0);
    grid->addWidget(new QLabel(tr("Choosed Channels(Max 8)"), this), 0, 1);
    grid->addWidget(m_left, 1, 0);
    grid->addWidget(m_right, 1, 1);
    auto *row = new QHBoxLayout;
    row->addWidget(reset);
    row->addWidget(top);
    row->addStretch(1);
    row->addWidget(buttons);
    grid->addLayout(row, 2, 0, 1, 2);
    resize(560, 380);

    connect(m_left, &QListWidget::itemDoubleClicked, this, &CAnaFormChnGrpVecDlgReset::slot_lstLeftDbClicked);
    connect(m_right, &QListWidget::itemDoubleClicked, this,
            &CAnaFormChnGrpVecDlgReset::slot_lstRightDbClicked);
    connect(reset, &QPushButton::clicked, this, &CAnaFormChnGrpVecDlgReset::slot_btnDelAll);
    connect(top, &QPushButton::clicked, this, &CAnaFormChnGrpVecDlgReset::slot_btnGoTop);
}

QListWidgetItem *CAnaFormChnGrpVecDlgReset::makeItem(CChnMapAnalog *chn, uint32_t displayFlags) const
{
    auto *item = new QListWidgetItem(CAnaFormBase::channelName(*chn, displayFlags));
    item->setData(Qt::UserRole, QVariant::fromValue(quintptr(chn)));
    item->setForeground(QColor::fromRgba(chn->colour));
    item->setIcon(QIcon(chn->Class() == ClassACV ? QStringLiteral(":/images/ChnClassACV.png")
                                                 : QStringLiteral(":/images/ChnClassACC.png")));
    return item;
}

void CAnaFormChnGrpVecDlgReset::refillOffered()
{
    const std::vector<CChnMapAnalog *> taken = chosen();
    m_left->clear();
    for (CChnMapAnalog *chn : m_all) {
        if (std::find(taken.begin(), taken.end(), chn) == taken.end())
            m_left->addItem(makeItem(chn, m_displayFlags));
    }
}

std::vector<CChnMapAnalog *> CAnaFormChnGrpVecDlgReset::chosen() const
{
    std::vector<CChnMapAnalog *> list;
    for (int i = 0; i < m_right->count(); ++i)
        list.push_back(channelOf(m_right->item(i)));
    return list;
}

void CAnaFormChnGrpVecDlgReset::slot_lstLeftDbClicked(QListWidgetItem *item)
{
    if (!item)
        return;
    m_right->addItem(m_left->takeItem(m_left->row(item)));
}

void CAnaFormChnGrpVecDlgReset::slot_lstRightDbClicked(QListWidgetItem *item)
{
    if (!item)
        return;
    delete m_right->takeItem(m_right->row(item));
    refillOffered();
}

void CAnaFormChnGrpVecDlgReset::slot_btnDelAll()
{
    m_right->clear();
    refillOffered();
}

void CAnaFormChnGrpVecDlgReset::slot_btnGoTop()
{
    const int row = m_right->currentRow();
    if (row <= 0)
        return;
    m_right->insertItem(0, m_right->takeItem(row));
    m_right->setCurrentRow(0);
}

void CAnaFormChnGrpVecDlgReset::accept()
{
    if (m_right->count() < 1) {
        QMessageBox::warning(this, QString(), tr("Please Choose NOT Less Than One Channel!"));
        return;
    }
    if (m_right->count() > kMaxChannels) {
        QMessageBox::warning(this, QString(),
                             tr("Can NOT Choose More Than %d Channels!")
                                 .replace(QLatin1String("%d"), QString::number(kMaxChannels)));
        return;
    }
    QDialog::accept();
}
