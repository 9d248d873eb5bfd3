#include "filecombindlg.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtdcombin.h"
#include "cmtdviewanawave.h"
#include "dialogbuttons.h"
#include "inception.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QSpinBox>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>

#include <atomic>
#include <cmath>

namespace {

// The fewest samples a combined recording is made of.
constexpr int kMinPoints = 5;

// Progress between the combining thread and the dialog's bar.
struct CombinProgress
{
    std::atomic<int> total{0};
    std::atomic<int> done{0};
    std::atomic<bool> cancel{false};
};

int reportCombin(void *context, int code, int total, int current)
{
    auto *p = static_cast<CombinProgress *>(context);
    switch (code) {
    case 8:
        p->total = total;
        return std::max(1, total / 100);
    case 10:
        p->done = current;
        return 0;
    case 0:
        return p->cancel ? -1 : 0;
    default:
        return 0;
    }
}

// The new recording's name: the base's folder and the present date and time.
QString newBaseName(const QString &sourcePath)
{
    const QDateTime now = QDateTime::currentDateTime();
    const QDate d = now.date();
    const QTime t = now.time();
    return QString::asprintf("%s/%04d-%02d-%02d@%02d-%02d-%02d.%06d",
                             QFileInfo(sourcePath).absolutePath().toLocal8Bit().constData(), d.year(),
                             d.month(), d.day(), t.hour(), t.minute(), t.second(), t.msec() * 1000);
}

const CChnMapBase *channelOf(const QListWidgetItem *item)
{
    return reinterpret_cast<const CChnMapBase *>(item->data(Qt::UserRole).value<quintptr>());
}

} // namespace

CFileCombinDlg::CFileCombinDlg(const QList<CCmtdChildFrame *> &recordings, QWidget *parent)
    : QDialog(parent), m_recordings(recordings), m_combin(std::make_unique<CCmtd99FileCombin>()),
      m_cmbBase(new QComboBox(this)), m_spinFrom(new QSpinBox(this)), m_spinTo(new QSpinBox(this)),
      m_lstOthers(new QListWidget(this)), m_lstChannels(new QListWidget(this)),
      m_spinAlign(new QSpinBox(this)), m_spinBaseAlign(new QSpinBox(this)), m_cmbMethod(new QComboBox(this)),
      m_lblAlign(new QLabel(this)), m_cmbType(new QComboBox(this)), m_editOut(new QLineEdit(this))
{
    setWindowTitle(tr("Combin Files"));
    for (CCmtdChildFrame *frame : recordings)
        m_cmbBase->addItem(QFileInfo(frame->currentFileName()).fileName());
    auto *baseBox = new QGroupBox(tr("[Base File]"), this);
    auto *baseForm = new QFormLayout(baseBox);
    baseForm->addRow(tr("Base File(&B)"), m_cmbBase);
    auto *range = new QHBoxLayout;
    range->addWidget(m_spinFrom);
    range->addWidget(new QLabel(tr("to"), this));
    range->addWidget(m_spinTo);
    auto *cursors = new QPushButton(tr("From Cursors T1, T2(&R)"), this);
    range->addWidget(cursors);
    baseForm->addRow(tr("Samples"), range);

    auto *filesBox = new QGroupBox(tr("Files and Channels"), this);
    auto *files = new QHBoxLayout(filesBox);
    files->addWidget(m_lstOthers, 1);
    files->addWidget(m_lstChannels, 1);
    auto *alignBox = new QGroupBox(tr("Align Points"), this);
    auto *alignForm = new QFormLayout(alignBox);
    alignForm->addRow(tr("Sample of this File(&S)"), m_spinAlign);
    alignForm->addRow(tr("on Sample of the Base(&A)"), m_spinBaseAlign);
    auto *alignButtons = new QHBoxLayout;
    auto *takeT1 = new QPushButton(tr("T1 of Both Windows(&T)"), this);
    auto *inception = new QPushButton(tr("At Fault Inception(&F)"), this);
    alignButtons->addWidget(takeT1);
    alignButtons->addWidget(inception);
    alignForm->addRow(alignButtons);
    m_lblAlign->setWordWrap(true);
    alignForm->addRow(m_lblAlign);
    for (int method = 0; method <= CombinKriging; ++method)
        m_cmbMethod->addItem(CombinMethodText(method));
    alignForm->addRow(tr("Insert Method(&M)"), m_cmbMethod);

    auto *outBox = new QGroupBox(tr("New File"), this);
    auto *outForm = new QFormLayout(outBox);
    auto *outRow = new QHBoxLayout;
    outRow->addWidget(m_editOut, 1);
    auto *browse = new QPushButton(tr("..."), this);
    outRow->addWidget(browse);
    auto *name = new QLabel(tr("Name(&N)"), this);
    name->setBuddy(m_editOut);
    outForm->addRow(name, outRow);
    m_cmbType->addItems({QStringLiteral("BINARY"), QStringLiteral("ASCII")});
    outForm->addRow(tr("Data File"), m_cmbType);

    QDialogButtonBox *buttons = OkCancelButtons(this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("Combin(&C)"));
    auto *column = new QVBoxLayout(this);
    column->addWidget(baseBox);
    column->addWidget(filesBox, 1);
    column->addWidget(alignBox);
    column->addWidget(outBox);
    column->addWidget(buttons);
    resize(760, 640);

    connect(m_cmbBase, &QComboBox::currentIndexChanged, this, &CFileCombinDlg::slot_baseChanged);
    connect(cursors, &QPushButton::clicked, this, &CFileCombinDlg::slot_rangeFromCursors);
    connect(m_lstOthers, &QListWidget::currentItemChanged, this, &CFileCombinDlg::slot_otherChanged);
    connect(takeT1, &QPushButton::clicked, this, &CFileCombinDlg::slot_alignFromCursors);
    connect(inception, &QPushButton::clicked, this, &CFileCombinDlg::slot_alignAtInception);
    connect(browse, &QPushButton::clicked, this, &CFileCombinDlg::slot_browse);
    slot_baseChanged(0);
}

CFileCombinDlg::~CFileCombinDlg() = default;

CCmtdChildFrame *CFileCombinDlg::baseFrame() const
{
    const int at = m_cmbBase->currentIndex();
    return at >= 0 && at < m_recordings.size() ? m_recordings[at] : nullptr;
}

CCmtdChildFrame *CFileCombinDlg::shownFrame() const
{
    return m_shown;
}

CombinItem *CFileCombinDlg::shownItem() const
{
    return m_shown ? m_combin->item(&m_shown->recording()) : nullptr;
}

void CFileCombinDlg::slot_baseChanged(int)
{
    CCmtdChildFrame *base = baseFrame();
    m_combin = std::make_unique<CCmtd99FileCombin>();
    m_shown = nullptr;
    m_lstOthers->clear();
    m_lstChannels->clear();
    if (!base)
        return;
    const CCmtd99File &file = base->recording();
    m_combin->m_base.file = &file;
    for (int c = 0; c < file.FileAnalogStoreCount(); ++c)
        m_combin->m_base.analogChannels.push_back(file.analogMaps[size_t(c)].get());
    for (const auto &map : file.statusMaps)
        m_combin->m_base.statusChannels.push_back(map.get());
    for (QSpinBox *box : {m_spinFrom, m_spinTo, m_spinBaseAlign})
        box->setRange(0, std::max(0, file.loadedPoints - 1));
    slot_rangeFromCursors();
    // The base first, then the other recordings to take in (ticked ones are combined).
    auto *baseRow = new QListWidgetItem(tr("[Base File] %1").arg(m_cmbBase->currentText()), m_lstOthers);
    baseRow->setData(Qt::UserRole, QVariant::fromValue(quintptr(base)));
    for (CCmtdChildFrame *frame : m_recordings) {
        if (frame == base)
            continue;
        auto *row = new QListWidgetItem(QFileInfo(frame->currentFileName()).fileName(), m_lstOthers);
        row->setData(Qt::UserRole, QVariant::fromValue(quintptr(frame)));
        row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
        row->setCheckState(Qt::Unchecked);
    }
    m_editOut->setText(newBaseName(base->fileName()) + QStringLiteral(".cfg"));
    m_lstOthers->setCurrentRow(0);
}

void CFileCombinDlg::slot_rangeFromCursors()
{
    CCmtdChildFrame *base = baseFrame();
    if (!base)
        return;
    const int t1 = base->waveView()->cursorT1;
    const int t2 = base->waveView()->cursorT2;
    // Cursors on one sample: the whole recording.
    const bool whole = t1 == t2;
    m_spinFrom->setValue(whole ? 0 : std::min(t1, t2));
    m_spinTo->setValue(whole ? base->recording().loadedPoints - 1 : std::max(t1, t2));
}

void CFileCombinDlg::fillChannels(CCmtdChildFrame *frame, const CombinItem &item)
{
    m_lstChannels->clear();
    const CCmtd99File &file = frame->recording();
    auto add = [this, &file](const CChnMapBase *chn, bool chosen) {
        auto *row = new QListWidgetItem(file.Text(chn->Record()->ch_id), m_lstChannels);
        row->setData(Qt::UserRole, QVariant::fromValue(quintptr(chn)));
        row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
        row->setCheckState(chosen ? Qt::Checked : Qt::Unchecked);
    };
    for (int c = 0; c < file.FileAnalogStoreCount(); ++c) {
        const CChnMapAnalog *chn = file.analogMaps[size_t(c)].get();
        add(chn, std::find(item.analogChannels.begin(), item.analogChannels.end(), chn) !=
                     item.analogChannels.end());
    }
    for (const auto &map : file.statusMaps) {
        const CChnMapStatus *chn = map.get();
        add(chn, std::find(item.statusChannels.begin(), item.statusChannels.end(), chn) !=
                     item.statusChannels.end());
    }
}

void CFileCombinDlg::storeShown()
{
    CombinItem *item = shownItem();
    if (!item)
        return;
    item->analogChannels.clear();
    item->statusChannels.clear();
    for (int i = 0; i < m_lstChannels->count(); ++i) {
        const QListWidgetItem *row = m_lstChannels->item(i);
        if (row->checkState() != Qt::Checked)
            continue;
        const CChnMapBase *chn = channelOf(row);
        if (chn->chnType == CChnMapBase::TypeAnalog)
            item->analogChannels.push_back(static_cast<const CChnMapAnalog *>(chn));
        else
            item->statusChannels.push_back(static_cast<const CChnMapStatus *>(chn));
    }
    if (item != &m_combin->m_base) {
        item->alignPoint = m_spinAlign->value();
        item->baseAlignPoint = m_spinBaseAlign->value();
        item->method = m_cmbMethod->currentIndex();
    }
}

void CFileCombinDlg::slot_otherChanged(QListWidgetItem *current)
{
    storeShown();
    m_shown = current ? reinterpret_cast<CCmtdChildFrame *>(current->data(Qt::UserRole).value<quintptr>())
                      : nullptr;
    if (!m_shown)
        return;
    CombinItem *item = shownItem();
    if (!item) {
        // An other file is taken in when it is first looked at, with all its channels.
        const CCmtd99File &file = m_shown->recording();
        CombinItem &added = m_combin->addOther(&file);
        for (int c = 0; c < file.FileAnalogStoreCount(); ++c)
            added.analogChannels.push_back(file.analogMaps[size_t(c)].get());
        for (const auto &map : file.statusMaps)
            added.statusChannels.push_back(map.get());
        added.baseAlignPoint = m_spinFrom->value();
        item = &added;
        current->setCheckState(Qt::Checked);
    }
    const bool other = item != &m_combin->m_base;
    for (QWidget *w : {static_cast<QWidget *>(m_spinAlign), static_cast<QWidget *>(m_spinBaseAlign),
                       static_cast<QWidget *>(m_cmbMethod)})
        w->setEnabled(other);
    if (other) {
        m_spinAlign->setRange(0, std::max(0, m_shown->recording().loadedPoints - 1));
        m_spinAlign->setValue(item->alignPoint);
        m_spinBaseAlign->setValue(item->baseAlignPoint);
        m_cmbMethod->setCurrentIndex(std::clamp(item->method, 0, int(CombinKriging)));
    }
    fillChannels(m_shown, *item);
    showAlignNote();
}

void CFileCombinDlg::slot_alignFromCursors()
{
    if (!m_shown || m_shown == baseFrame())
        return;
    m_spinAlign->setValue(m_shown->waveView()->cursorT1);
    m_spinBaseAlign->setValue(baseFrame()->waveView()->cursorT1);
    showAlignNote();
}

void CFileCombinDlg::slot_alignAtInception()
{
    storeShown();
    CombinItem *item = shownItem();
    if (!item || item == &m_combin->m_base)
        return;
    // Like with like: in the base, the channels of the classes the other file offers (currents
    // jump a few samples after voltages sag), else all of them.
    std::vector<const CChnMapAnalog *> like;
    for (const CChnMapAnalog *chn : m_combin->m_base.analogChannels) {
        for (const CChnMapAnalog *theirs : item->analogChannels) {
            if (chn->Class() == theirs->Class()) {
                like.push_back(chn);
                break;
            }
        }
    }
    const int base =
        FirstJumpSample(*m_combin->m_base.file, like.empty() ? m_combin->m_base.analogChannels : like, 0);
    const int other = FirstJumpSample(*item->file, item->analogChannels, 0);
    if (base < 0 || other < 0) {
        QMessageBox::information(
            this, QString(),
            tr("No fault inception found in the chosen analog channels of %1.")
                .arg(base < 0 ? m_cmbBase->currentText() : m_lstOthers->currentItem()->text()));
        return;
    }
    m_spinAlign->setValue(other);
    m_spinBaseAlign->setValue(base);
    showAlignNote();
}

void CFileCombinDlg::showAlignNote()
{
    const CombinItem *item = shownItem();
    if (!item || item == &m_combin->m_base) {
        m_lblAlign->clear();
        return;
    }
    // Each file knows the instant only to its own sample: half a sample of each, as an angle of
    // the rated frequency, is what the alignment may be off.
    RateSegment a;
    RateSegment b;
    const CCmtd99File &base = *m_combin->m_base.file;
    if (!FindRateSegment(base, m_spinBaseAlign->value(), a) ||
        !FindRateSegment(*item->file, m_spinAlign->value(), b) || !(a.rate > 0.0f) || !(b.rate > 0.0f)) {
        m_lblAlign->clear();
        return;
    }
    const double freq = base.fileDesc.lineFreq > 0.0f ? base.fileDesc.lineFreq : 50.0;
    const double degrees = 360.0 * freq * 0.5 * (1.0 / a.rate + 1.0 / b.rate);
    m_lblAlign->setText(tr("The samples line up to within ±%1° at %2 Hz (half a sample of each file).")
                            .arg(degrees, 0, 'f', 2)
                            .arg(freq, 0, 'f', 0));
}

void CFileCombinDlg::slot_browse()
{
    static QString lastFolder;
    const QString path = QFileDialog::getSaveFileName(
        this, QString(), lastFolder.isEmpty() ? m_editOut->text() : lastFolder, tr("COMTRADE File(*.cfg)"));
    if (path.isEmpty())
        return;
    lastFolder = QFileInfo(path).absolutePath();
    m_editOut->setText(
        path.endsWith(QStringLiteral(".cfg"), Qt::CaseInsensitive) ? path : path + QStringLiteral(".cfg"));
}

bool CFileCombinDlg::combine()
{
    storeShown();
    if (!m_combin->m_base.file) {
        QMessageBox::warning(this, QString(), tr("Please Choose [Base File] First!"));
        return false;
    }
    // Only the ticked files are taken in.
    for (int i = 1; i < m_lstOthers->count(); ++i) {
        const QListWidgetItem *row = m_lstOthers->item(i);
        const auto *frame = reinterpret_cast<CCmtdChildFrame *>(row->data(Qt::UserRole).value<quintptr>());
        if (row->checkState() != Qt::Checked)
            m_combin->removeOther(&frame->recording());
    }
    size_t channels = m_combin->m_base.analogChannels.size() + m_combin->m_base.statusChannels.size();
    for (const auto &other : m_combin->m_others)
        channels += other->analogChannels.size() + other->statusChannels.size();
    if (channels == 0) {
        QMessageBox::warning(this, QString(), tr("No Channels to Combin into the new file!"));
        return false;
    }
    m_combin->m_base.first = m_spinFrom->value();
    m_combin->m_base.last = m_spinTo->value();
    if (m_combin->m_base.last - m_combin->m_base.first + 1 < kMinPoints) {
        QMessageBox::warning(this, QString(),
                             tr("The [Cutted-Sampling] is too few! need %d Points at least!")
                                 .replace(QLatin1String("%d"), QString::number(kMinPoints)));
        return false;
    }
    QString out = m_editOut->text().trimmed();
    if (out.endsWith(QStringLiteral(".cfg"), Qt::CaseInsensitive))
        out.chop(4);
    m_combin->m_strTitle = QFileInfo(out).fileName().toLocal8Bit();
    // The combination runs beside the interface, which shows its progress and can stop it.
    CombinProgress progress;
    QString error;
    bool written = false;
    const QByteArray type = m_cmbType->currentText().toLatin1();
    CCmtd99FileCombin *combin = m_combin.get();
    std::unique_ptr<QThread> worker(
        QThread::create([&] { written = combin->run(out, error, type, 0.0f, reportCombin, &progress); }));
    QProgressDialog bar(tr("Combining..."), tr("Stop"), 0, 100, this);
    bar.setWindowModality(Qt::WindowModal);
    bar.setMinimumDuration(300);
    QEventLoop loop;
    QTimer tick;
    connect(&tick, &QTimer::timeout, &bar, [&] {
        const int total = progress.total;
        bar.setValue(total > 0 ? int(int64_t(progress.done) * 100 / total) : 0);
    });
    connect(&bar, &QProgressDialog::canceled, &bar, [&] { progress.cancel = true; });
    connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
    tick.start(100);
    worker->start();
    loop.exec();
    worker->wait();
    tick.stop();
    bar.reset();
    if (!written) {
        if (!combin->stopped)
            QMessageBox::warning(this, QString(), error);
        return false;
    }
    m_result = out + QStringLiteral(".cfg");
    return true;
}

void CFileCombinDlg::accept()
{
    if (combine())
        QDialog::accept();
}
