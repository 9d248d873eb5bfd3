#include "anaformchngrprx.h"

#include "anaformchngrprxbounddlg.h"
#include "anaformchngrprxdlgreset.h"
#include "anaformchngrprxview.h"
#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtddocument.h"
#include "cmtdthread.h"

#include <QBoxLayout>
#include <QCursor>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QSplitter>
#include <QTableWidget>
#include <QToolButton>
#include <QTreeWidget>

#include <cmath>
#include <memory>

namespace {

// The channel whose transformer ratio stands for a loop's voltage and current side.
const CChnMapAnalog *rowCurrent(const RxObject &o, int row)
{
    for (const auto &group : o.chnI) {
        if (group[row])
            return group[row];
    }
    return nullptr;
}

int firstRow(const RxObject &o)
{
    for (int row = 0; row < 3; ++row) {
        if (o.nMask & (1u << row))
            return row;
    }
    return -1;
}

QString cText(const QString &format, double a)
{
    return QString::asprintf(format.toUtf8().constData(), a);
}

} // namespace

CAnaFormChnGrpRx::CAnaFormChnGrpRx(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container)
    : CAnaFormBase(number, frame, container), m_view(new CAnaFormChnGrpRxView(frame, this)),
      m_tblVal(new QTableWidget(3, 3, this)), m_tblChns(new QTreeWidget(this)), m_menu(new QMenu(this))
{
    for (int kind = 0; kind < 4; ++kind) {
        m_objects[kind].nKind = kind;
        m_objects[kind].pRecording = &frame->recording();
    }
    m_strTitle = tr("Impedance Analysis");
    m_nDockFeatures = DockFeaturesAll;
    m_nDockH = fontMetrics().height() * 24;
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(2, 2, 2, 2);
    auto *bar = new QHBoxLayout;
    addObjectButtons(bar);
    m_btnBound = makeButton("WaveAnaRX.png");
    m_btnBound->setObjectName(QStringLiteral("btnBound"));
    m_btnTrace = makeButton("showTrace.png", true);
    m_btnTrace->setObjectName(QStringLiteral("btnTrace"));
    bar->addWidget(m_btnBound);
    bar->addWidget(m_btnTrace);
    const struct
    {
        const char *icon;
        void (CAnaFormChnGrpRx::*slot)();
    } zooms[] = {{"ZoomOut.png", &CAnaFormChnGrpRx::slot_btnZoomOut},
                 {"ZoomIn.png", &CAnaFormChnGrpRx::slot_btnZoomIn},
                 {"ZoomRes.png", &CAnaFormChnGrpRx::slot_btnZoomComeback}};
    for (const auto &z : zooms) {
        QToolButton *button = makeButton(z.icon);
        button->setToolButtonStyle(Qt::ToolButtonIconOnly);
        bar->addWidget(button);
        connect(button, &QToolButton::clicked, this, z.slot);
    }
    addMouseModeButtons(bar);
    bar->addStretch(1);
    addPlayControls(bar);
    column->addLayout(bar);

    auto *split = new QSplitter(Qt::Horizontal, this);
    auto *left = new QSplitter(Qt::Vertical, split);
    m_tblVal->setObjectName(QStringLiteral("tblVal"));
    m_tblVal->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tblVal->setSelectionMode(QAbstractItemView::NoSelection);
    m_tblVal->verticalHeader()->hide();
    const int widths[] = {58, 128, 128};
    for (int c = 0; c < 3; ++c)
        m_tblVal->setColumnWidth(c, widths[c]);
    for (int row = 0; row < 3; ++row) {
        for (int c = 0; c < 3; ++c)
            m_tblVal->setItem(row, c, new QTableWidgetItem);
    }
    left->addWidget(m_tblVal);
    m_tblChns->setObjectName(QStringLiteral("tblChns"));
    m_tblChns->setRootIsDecorated(false);
    left->addWidget(m_tblChns);
    split->addWidget(left);
    auto *area = new CScrollAreaEx(split);
    area->setView(m_view);
    split->addWidget(area);
    split->setStretchFactor(0, 0);
    split->setStretchFactor(1, 1);
    split->setSizes({58 + 128 + 128 + 8, 800});
    column->addWidget(split, 1);
    m_views = {m_view};

    m_menuKinds[0] = m_menu->addAction(QIcon(), QString(), this, &CAnaFormChnGrpRx::slot_resetObjectUxIxK);
    m_menuKinds[1] = m_menu->addAction(QIcon(), QString(), this, &CAnaFormChnGrpRx::slot_resetObjectUxIx);
    m_menuKinds[2] = m_menu->addAction(QIcon(), QString(), this, &CAnaFormChnGrpRx::slot_resetObjectUxyIxy);
    m_menuKinds[3] = m_menu->addAction(QIcon(), QString(), this, &CAnaFormChnGrpRx::slot_resteObjectRXChn);
    connect(m_btnBound, &QToolButton::clicked, this, &CAnaFormChnGrpRx::slot_btnBoundSetup);
    connect(m_btnTrace, &QToolButton::clicked, this, &CAnaFormChnGrpRx::slot_btnShowTrace);
    connect(m_tblVal, &QTableWidget::cellClicked, this, &CAnaFormChnGrpRx::slot_tblValClicked);
    connect(m_tblChns, &QTreeWidget::itemDoubleClicked, this, &CAnaFormChnGrpRx::slot_tblChnsDbClicked);
    connect(frame, &CCmtdChildFrame::jobEnded, this, &CAnaFormChnGrpRx::slot_jobEnded);
    m_btnAction = nullptr;
    retranslateTexts();
}

CAnaFormChnGrpRx::~CAnaFormChnGrpRx() = default;

void CAnaFormChnGrpRx::retranslateTexts()
{
    retranslateShared();
    m_btnBound->setText(tr("Boundary Setup"));
    m_btnTrace->setText(tr("Plot Curve"));
    m_tblVal->setHorizontalHeaderLabels({tr("Phase"), tr("Mod."), tr("Vector")});
    m_tblChns->setHeaderLabels({tr("Related Channels")});
    m_menuKinds[0]->setText(tr("[Ux / (Ix+kIo)](&L)"));
    m_menuKinds[1]->setText(tr("[Ux / Ix](&T)"));
    m_menuKinds[2]->setText(tr("[Uxy / Ixy](&P)"));
    m_menuKinds[3]->setText(tr("User Choose RX Channels(&S)"));
}

RxObject *CAnaFormChnGrpRx::currentObject() const
{
    return m_view->m_pObject;
}

bool CAnaFormChnGrpRx::activate()
{
    markRelated(true);
    // The engineer comes for a loop: offer the four kinds at once, under the button.
    if (!currentObject() && m_btnChoose)
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (!currentObject() && m_btnChoose->isVisible())
                    m_menu->popup(m_btnChoose->mapToGlobal(QPoint(0, m_btnChoose->height())));
            },
            Qt::QueuedConnection);
    refresh();
    return true;
}

bool CAnaFormChnGrpRx::chooseObject()
{
    slot_btnSel();
    return false;
}

void CAnaFormChnGrpRx::slot_btnSel()
{
    if (refuseWhileBusy())
        return;
    m_menu->popup(QCursor::pos());
}

void CAnaFormChnGrpRx::slot_resetObjectUxIxK()
{
    runObjectDialog(RxObject::KindUxIxK);
}

void CAnaFormChnGrpRx::slot_resetObjectUxIx()
{
    runObjectDialog(RxObject::KindUxIx);
}

void CAnaFormChnGrpRx::slot_resetObjectUxyIxy()
{
    runObjectDialog(RxObject::KindUxyIxy);
}

void CAnaFormChnGrpRx::slot_resteObjectRXChn()
{
    runObjectDialog(RxObject::KindRxChn);
}

bool CAnaFormChnGrpRx::runObjectDialog(int kind)
{
    // A trace job writes into the object; it must not change underneath.
    if (kind < 0 || kind > 3 || m_bJobRunning || refuseWhileBusy())
        return false;
    const uint32_t flags = m_pFrame->document()->displayFlags.toInt();
    std::unique_ptr<CAnaFormChnGrpRxDlgResetObj> dialog(
        MakeRxObjectDialog(m_objects[kind], m_pFrame->recording(), flags, this));
    if (!dialog || dialog->exec() != QDialog::Accepted)
        return false;
    markRelated(false);
    m_view->m_pObject = &m_objects[kind];
    rebuildChannels();
    markRelated(true);
    if (m_btnHide && m_btnHide->isChecked())
        m_pFrame->hideUnrelated(m_chns);
    applyObject();
    return true;
}

void CAnaFormChnGrpRx::rebuildChannels()
{
    m_chns.clear();
    const RxObject *o = currentObject();
    if (!o)
        return;
    auto add = [this](const CChnMapAnalog *chn) {
        if (chn)
            m_chns.push_back(const_cast<CChnMapAnalog *>(chn));
    };
    if (o->nKind == RxObject::KindRxChn) {
        add(o->chnR);
        add(o->chnX);
        return;
    }
    for (const CChnMapAnalog *u : o->chnU)
        add(u);
    for (int phase = 0; phase < 3; ++phase) {
        for (const auto &group : o->chnI)
            add(group[phase]);
    }
}

void CAnaFormChnGrpRx::setRowIcon(int row)
{
    const RxObject *o = currentObject();
    const uint32_t bit = 1u << row;
    QTableWidgetItem *item = m_tblVal->item(row, 0);
    if (!o || !(o->nMask & bit))
        item->setIcon(QIcon());
    else
        item->setIcon(QIcon((o->nShown & bit) ? QStringLiteral(":/images/IconEnabled.png")
                                              : QStringLiteral(":/images/IconDisabled.png")));
}

void CAnaFormChnGrpRx::applyObject()
{
    RxObject *o = currentObject();
    if (!o)
        return;
    const QString name = RxObjectName(o->nKind);
    setSubTitle(&name);
    if (m_btnTrace->isChecked() && !(o->nFrom >= 0 && o->nTo > o->nFrom))
        m_btnTrace->setChecked(false);
    for (int row = 0; row < 3; ++row) {
        const uint32_t bit = 1u << row;
        const bool exists = (o->nMask & bit) != 0;
        QTableWidgetItem *item = m_tblVal->item(row, 0);
        setRowIcon(row);
        item->setText(RxRowName(*o, row));
        item->setData(Qt::UserRole, exists ? bit : 0u);
        const CChnMapAnalog *chn = o->nKind == RxObject::KindRxChn ? o->chnR : o->chnU[row];
        item->setForeground(QColor::fromRgba(exists && chn ? chn->colour : 0xFFFFFFFFu));
        for (int c = 1; c < 3; ++c)
            m_tblVal->item(row, c)->setText(QString());
    }
    fillChnTree(m_tblChns);
    m_view->resetView();
    refresh();
}

double CAnaFormChnGrpRx::impedanceFactor() const
{
    const RxObject *o = currentObject();
    if (!o || !m_pFrame->document()->displayFlags.testFlag(CCmtdDocument::ValuePrimary))
        return 1.0;
    const int row = firstRow(*o);
    if (row < 0)
        return 1.0;
    if (o->nKind == RxObject::KindRxChn)
        return o->chnR ? o->chnR->TransformRatio() : 1.0;
    const CChnMapAnalog *u = o->chnU[row];
    const CChnMapAnalog *i = rowCurrent(*o, row);
    return u && i ? double(u->TransformRatio()) / double(i->TransformRatio()) : 1.0;
}

void CAnaFormChnGrpRx::updateTable()
{
    const RxObject *o = currentObject();
    const double factor = impedanceFactor();
    for (int row = 0; row < 3; ++row) {
        if (!(o->nMask & (1u << row)))
            continue;
        const double r = o->z[row].re * factor;
        const double x = o->z[row].im * factor;
        const double modulus = std::sqrt(r * r + x * x);
        const double angle = std::atan2(x, r) * 57.29577957855229;
        const QColor colour = m_tblVal->item(row, 0)->foreground().color();
        QTableWidgetItem *polar = m_tblVal->item(row, 1);
        polar->setText(QString::asprintf(tr("%.2f(omh)(Ang)%.2f(Deg)").toUtf8().constData(), modulus, angle));
        QTableWidgetItem *complex = m_tblVal->item(row, 2);
        complex->setText(cText(tr("%.2f(omh)"), r) + (x < 0.0 ? QStringLiteral("-j") : QStringLiteral("+j")) +
                         cText(tr("%.2f(omh)"), std::fabs(x)));
        for (QTableWidgetItem *item : {polar, complex}) {
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            item->setForeground(colour);
        }
    }
}

void CAnaFormChnGrpRx::refresh()
{
    if (RxObject *o = currentObject()) {
        const int sample = RxWindowSample(*o, cursorT1());
        for (int row = 0; row < 3; ++row)
            RxComputeRow(*o, row, sample, nullptr, o->z[row]);
        updateTable();
    }
    CAnaFormBase::refresh();
}

void CAnaFormChnGrpRx::resetObject()
{
    CAnaFormBase::resetObject();
    m_view->m_pObject = nullptr;
    m_btnTrace->setChecked(false);
    for (int row = 0; row < 3; ++row) {
        for (int c = 0; c < 3; ++c) {
            m_tblVal->item(row, c)->setText(QString());
            m_tblVal->item(row, c)->setIcon(QIcon());
        }
    }
    m_tblChns->clear();
    const QString none;
    setSubTitle(&none);
}

void CAnaFormChnGrpRx::forgetChannel(const CChnMapBase *channel)
{
    // Every kind keeps its choice: a choice that used the channel is void.
    for (RxObject &o : m_objects) {
        bool uses = o.chnR == channel || o.chnX == channel;
        for (int p = 0; p < 3; ++p) {
            uses = uses || o.chnU[p] == channel;
            for (const auto &group : o.chnI)
                uses = uses || group[p] == channel;
        }
        if (!uses)
            continue;
        if (&o == currentObject())
            CAnaFormBase::forgetChannel(channel);
        RxClearObject(o);
    }
}

bool CAnaFormChnGrpRx::tracing() const
{
    const RxObject *o = currentObject();
    return o && !m_bJobRunning && m_btnTrace->isChecked() && o->nFrom >= 0 && o->nTo > o->nFrom;
}

void CAnaFormChnGrpRx::slot_btnBoundSetup()
{
    CAnaFormChnGrpRxBoundDlg dialog(this);
    if (!dialog.exec(&m_view->m_bounds))
        return;
    m_view->resetView();
}

void CAnaFormChnGrpRx::slot_btnShowTrace(bool on)
{
    RxObject *o = currentObject();
    if (!o) {
        if (on)
            m_btnTrace->setChecked(false);
        return;
    }
    if (!on) {
        CAnaFormBase::refresh();
        return;
    }
    const int t1 = cursorT1();
    const int t2 = cursorT2();
    if (std::abs(t2 - t1) < 2) {
        QMessageBox::warning(this, QString(), tr("The Points Selected to Plot Curve is Too Few!"));
        m_btnTrace->setChecked(false);
        return;
    }
    const int lo = std::min(t1, t2);
    const int hi = std::max(t1, t2);
    // The same range again shows the traces at hand; a trace that was stopped is computed anew.
    const bool stopped = m_job.object == o && !m_job.complete;
    if (o->nFrom == lo && o->nTo == hi && !stopped) {
        CAnaFormBase::refresh();
        return;
    }
    if (m_bJobRunning)
        return;
    m_job = RxTraceJob{o, lo, hi, false};
    if (m_pFrame->submitJob(CCmtdThread::KindRxTrace, &m_job))
        m_bJobRunning = true;
}

void CAnaFormChnGrpRx::slot_jobEnded(int kind)
{
    if (kind != CCmtdThread::KindRxTrace || !m_bJobRunning)
        return;
    m_bJobRunning = false;
    CAnaFormBase::refresh();
}

void CAnaFormChnGrpRx::slot_tblValClicked(int row, int column)
{
    RxObject *o = currentObject();
    if (column != 0 || !o || row < 0 || row > 2)
        return;
    const uint32_t bit = m_tblVal->item(row, 0)->data(Qt::UserRole).toUInt();
    if (!(o->nMask & bit))
        return;
    o->nShown ^= bit;
    setRowIcon(row);
    CAnaFormBase::refresh();
}

void CAnaFormChnGrpRx::slot_btnZoomIn()
{
    m_view->zoomBy(CAnaViewBase::kZoomStep);
}

void CAnaFormChnGrpRx::slot_btnZoomOut()
{
    m_view->zoomBy(1.0f / CAnaViewBase::kZoomStep);
}

void CAnaFormChnGrpRx::slot_btnZoomComeback()
{
    m_view->zoomBy(-1.0f);
}
