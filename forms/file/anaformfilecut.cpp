#include "anaformfilecut.h"

#include "channelcombo.h"
#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "exactcopy.h"
#include "menutext.h"
#include "timetext.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace {

// The folder of the last name taken from the file dialog, for every recording of the session.
QString s_lastCutFolder;

// The divisions of the highest rate offered for thinning: whole fractions keep every kept
// sample on a sample of the source.
constexpr int kRateDivisions[] = {2, 4, 5, 10, 20, 50, 100};
// No rate is offered below eight samples per cycle of the line frequency: below that the
// fundamental's phasor can no longer be followed in the cut.
constexpr double kMinSamplesPerCycle = 8.0;

QString withoutExtension(const QString &path, const char *extension)
{
    return path.endsWith(QLatin1String(extension), Qt::CaseInsensitive) ? path.left(path.size() - 4) : path;
}

} // namespace

QString CutFileBaseName(const QString &directory, const QDateTime &local, int microsecond)
{
    const QDate d = local.date();
    const QTime t = local.time();
    return QString::asprintf("%s/%04d-%02d-%02d@%02d-%02d-%02d.%06d", directory.toLocal8Bit().constData(),
                             d.year(), d.month(), d.day(), t.hour(), t.minute(), t.second(), microsecond);
}

QString CutFileBaseNameNow(const QString &directory)
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const qint64 us = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(us / 1000);
    return CutFileBaseName(directory, local, int(us % 1000000));
}

CAnaFormFileCut::CAnaFormFileCut(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container)
    : CAnaFormBase(number, frame, container), m_tree(new QTreeWidget(this)), m_labelRange(new QLabel(this)),
      m_labelMaxRate(new QLabel(this)), m_cmbRate(new QComboBox(this)), m_labelForm(new QLabel(this)),
      m_cmbForm(new QComboBox(this)), m_labelName(new QLabel(this)), m_editName(new QLineEdit(this)),
      m_btnBrowse(new QPushButton(QStringLiteral("..."), this)), m_btnAll(new QPushButton(this)),
      m_btnNone(new QPushButton(this))
{
    m_strTitle = tr("Cut File");
    m_nDockFeatures = DockFeaturesAll;
    m_nDockH = fontMetrics().height() * 16;
    m_tree->setHeaderHidden(true);
    m_tree->setObjectName(QStringLiteral("cutChannels"));
    m_btnAction = new QPushButton(QIcon(QStringLiteral(":/images/FileCut.png")), QString(), this);
    m_btnAction->setObjectName(QStringLiteral("btnCut"));
    m_btnBrowse->setMaximumWidth(fontMetrics().horizontalAdvance(QStringLiteral("....")) + 16);
    m_cmbForm->addItems({QStringLiteral("ASCII"), QStringLiteral("BINARY"), QStringLiteral("CSV")});
    m_cmbForm->setCurrentIndex(FormBinary);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(2, 2, 2, 2);
    auto *channels = new QVBoxLayout;
    channels->addWidget(m_tree, 1);
    auto *allNone = new QHBoxLayout;
    allNone->addWidget(m_btnAll);
    allNone->addWidget(m_btnNone);
    allNone->addStretch(1);
    channels->addLayout(allNone);
    row->addLayout(channels, 1);
    auto *fields = new QFormLayout;
    fields->addRow(m_labelRange);
    fields->addRow(m_labelMaxRate, m_cmbRate);
    fields->addRow(m_labelForm, m_cmbForm);
    auto *name = new QHBoxLayout;
    name->addWidget(m_editName, 1);
    name->addWidget(m_btnBrowse);
    fields->addRow(m_labelName, name);
    auto *action = new QHBoxLayout;
    action->addStretch(1);
    action->addWidget(m_btnAction);
    fields->addRow(action);
    row->addLayout(fields, 2);

    buildChannelTree();
    fillRates();
    m_editName->setText(CutFileBaseNameNow(QFileInfo(frame->fileName()).absolutePath()) +
                        QStringLiteral(".cfg"));
    connect(m_btnAll, &QPushButton::clicked, this, &CAnaFormFileCut::slot_btnAll);
    connect(m_btnNone, &QPushButton::clicked, this, &CAnaFormFileCut::slot_btnNone);
    connect(m_btnBrowse, &QPushButton::clicked, this, &CAnaFormFileCut::slot_btnBrowse);
    connect(m_btnAction, &QPushButton::clicked, this, &CAnaFormFileCut::slot_btnCut);
    connect(m_cmbForm, &QComboBox::currentIndexChanged, this, &CAnaFormFileCut::slot_cmbFormChanged);
    connect(m_tree, &QTreeWidget::itemChanged, this, [this] { takeCheckedChannels(); });
    retranslateTexts();
}

void CAnaFormFileCut::retranslateTexts()
{
    m_labelMaxRate->setText(tr("Highest Rate"));
    if (m_cmbRate->count() > 0)
        m_cmbRate->setItemText(0, tr("All"));
    m_labelForm->setText(tr("File Type"));
    m_labelName->setText(tr("File Name"));
    m_btnAll->setText(tr("All"));
    m_btnNone->setText(tr("None"));
    m_btnAction->setText(tr("Cut"));
    if (m_analogRoot)
        m_analogRoot->setText(0, tr("Analog Channels"));
    if (m_statusRoot)
        m_statusRoot->setText(0, tr("Status Channels"));
    refresh();
}

void CAnaFormFileCut::buildChannelTree()
{
    const QSignalBlocker quiet(m_tree);
    m_tree->clear();
    const CCmtd99File &file = m_pFrame->recording();
    const uint32_t flags = m_pFrame->document()->displayFlags.toInt();
    // Derived channels live in this session only: a cut carries the channels of the file.
    m_analogRoot = new QTreeWidgetItem(m_tree);
    for (int c = 0; c < file.FileAnalogStoreCount(); ++c) {
        CChnMapAnalog *chn = file.analogMaps[size_t(c)].get();
        auto *item = new QTreeWidgetItem(m_analogRoot, {channelName(*chn, flags)});
        item->setIcon(0, ChannelClassIcon(chn->Class()));
        item->setForeground(0, QColor::fromRgba(chn->colour));
        item->setData(0, Qt::UserRole, QVariant::fromValue(quintptr(static_cast<CChnMapBase *>(chn))));
        item->setCheckState(0, Qt::Checked);
    }
    m_statusRoot = new QTreeWidgetItem(m_tree);
    for (const auto &map : file.statusMaps) {
        auto *item = new QTreeWidgetItem(m_statusRoot, {channelName(*map, flags)});
        item->setIcon(0, QIcon(QStringLiteral(":/images/ChnStatusEvent.png")));
        item->setData(0, Qt::UserRole, QVariant::fromValue(quintptr(static_cast<CChnMapBase *>(map.get()))));
        item->setCheckState(0, Qt::Checked);
    }
    for (QTreeWidgetItem *root : {m_analogRoot, m_statusRoot}) {
        root->setFlags(root->flags() | Qt::ItemIsAutoTristate | Qt::ItemIsUserCheckable);
        root->setCheckState(0, root->childCount() > 0 ? Qt::Checked : Qt::Unchecked);
        root->setHidden(root->childCount() == 0);
        root->setExpanded(true);
    }
    m_chns.clear();
    for (QTreeWidgetItem *root : {m_analogRoot, m_statusRoot}) {
        for (int i = 0; i < root->childCount(); ++i)
            m_chns.push_back(
                reinterpret_cast<CChnMapBase *>(root->child(i)->data(0, Qt::UserRole).value<quintptr>()));
    }
}

void CAnaFormFileCut::fillRates()
{
    const CCmtd99File &file = m_pFrame->recording();
    float highest = 0.0f;
    for (const SampleSegment &s : file.segments)
        highest = std::max(highest, s.rate);
    std::vector<float> rates;
    for (const SampleSegment &s : file.segments) {
        if (s.rate < highest)
            rates.push_back(s.rate);
    }
    const double lowest = kMinSamplesPerCycle * std::max(double(file.fileDesc.lineFreq), 1.0);
    for (int k : kRateDivisions) {
        if (highest / float(k) >= lowest)
            rates.push_back(highest / float(k));
    }
    std::sort(rates.begin(), rates.end(), std::greater<float>());
    m_cmbRate->clear();
    m_cmbRate->addItem(tr("All"), 0.0f);
    float last = -1.0f;
    for (float rate : rates) {
        // Rates closer than 0.1 Hz are one rate, as the cut joins such segments too.
        if (std::abs(rate - last) < 0.1f)
            continue;
        m_cmbRate->addItem(QStringLiteral("%1 Hz").arg(double(rate), 0, 'g', 9), rate);
        last = rate;
    }
}

bool CAnaFormFileCut::activate()
{
    markRelated(true);
    refresh();
    return true;
}

void CAnaFormFileCut::refresh()
{
    const CCmtd99File &file = m_pFrame->recording();
    if (file.loadedPoints < 1 || !file.sampleTimes) {
        m_labelRange->clear();
        return;
    }
    const int first = std::clamp(std::min(cursorT1(), cursorT2()), 0, file.loadedPoints - 1);
    const int last = std::clamp(std::max(cursorT1(), cursorT2()), 0, file.loadedPoints - 1);
    auto at = [&file](int n) {
        // Numbered as the cursor read-outs of the wave number them.
        return tr("Point %1 (%2)").arg(n).arg(QString::fromLatin1(TimeText(file.sampleTimes[n])));
    };
    m_labelRange->setText(tr("From %1 to %2: %3 Points").arg(at(first), at(last)).arg(last - first + 1));
}

void CAnaFormFileCut::resetObject()
{
    markRelated(false);
    buildChannelTree();
    markRelated(true);
}

void CAnaFormFileCut::setAllChecked(bool on)
{
    for (QTreeWidgetItem *root : {m_analogRoot, m_statusRoot}) {
        if (root->childCount() > 0)
            root->setCheckState(0, on ? Qt::Checked : Qt::Unchecked);
    }
}

void CAnaFormFileCut::slot_btnAll()
{
    setAllChecked(true);
}

void CAnaFormFileCut::slot_btnNone()
{
    setAllChecked(false);
}

void CAnaFormFileCut::takeCheckedChannels()
{
    markRelated(false);
    m_chns.clear();
    for (QTreeWidgetItem *root : {m_analogRoot, m_statusRoot}) {
        for (int i = 0; i < root->childCount(); ++i) {
            QTreeWidgetItem *item = root->child(i);
            if (item->checkState(0) == Qt::Checked)
                m_chns.push_back(
                    reinterpret_cast<CChnMapBase *>(item->data(0, Qt::UserRole).value<quintptr>()));
        }
    }
    markRelated(true);
}

void CAnaFormFileCut::chosenChannels(std::vector<const CChnMapAnalog *> &analogs,
                                     std::vector<const CChnMapStatus *> &statuses) const
{
    for (CChnMapBase *chn : m_chns) {
        if (chn->chnType == CChnMapBase::TypeAnalog)
            analogs.push_back(static_cast<const CChnMapAnalog *>(chn));
        else
            statuses.push_back(static_cast<const CChnMapStatus *>(chn));
    }
}

QString CAnaFormFileCut::outputPath() const
{
    QString path = m_editName->text().trimmed();
    if (path.isEmpty())
        return path;
    if (QFileInfo(path).isRelative())
        path = QFileInfo(m_pFrame->fileName()).absoluteDir().filePath(path);
    return m_cmbForm->currentIndex() == FormCsv ? PathWithExtension(path, {"csv"})
                                                : PathWithExtension(path, {"cfg"});
}

void CAnaFormFileCut::slot_cmbFormChanged(int index)
{
    const QString name = m_editName->text().trimmed();
    if (name.isEmpty())
        return;
    m_editName->setText(index == FormCsv ? withoutExtension(name, ".cfg") + QStringLiteral(".csv")
                                         : withoutExtension(name, ".csv") + QStringLiteral(".cfg"));
}

void CAnaFormFileCut::slot_btnBrowse()
{
    const bool csv = m_cmbForm->currentIndex() == FormCsv;
    const QString start = s_lastCutFolder.isEmpty()
                              ? outputPath()
                              : QDir(s_lastCutFolder).filePath(QFileInfo(outputPath()).fileName());
    const QString filter = csv ? tr("CSV File(*.csv)") : tr("COMTRADE File(*.cfg)");
    const QString chosen = QFileDialog::getSaveFileName(this, QString(), start, filter);
    if (chosen.isEmpty())
        return;
    s_lastCutFolder = QFileInfo(chosen).absolutePath();
    m_editName->setText(PathWithExtension(chosen, {csv ? "csv" : "cfg"}));
}

void CAnaFormFileCut::renewName()
{
    // The next cut goes beside this one under a name of its own moment.
    const QString folder = QFileInfo(outputPath()).absolutePath();
    const bool csv = m_cmbForm->currentIndex() == FormCsv;
    m_editName->setText(CutFileBaseNameNow(folder) + (csv ? QStringLiteral(".csv") : QStringLiteral(".cfg")));
}

void CAnaFormFileCut::warnWriteFailed(const char *text, const QString &reason)
{
    QMessageBox box(QMessageBox::Warning, QString(), tr(text), QMessageBox::Ok, this);
    box.setInformativeText(reason);
    box.exec();
}

bool CAnaFormFileCut::writeCsv(const QString &path, int first, int last,
                               const std::vector<const CChnMapAnalog *> &analogs,
                               const std::vector<const CChnMapStatus *> &statuses)
{
    QString error;
    if (!m_pFrame->recording().SaveCsv(path, first, last, analogs, statuses, error)) {
        warnWriteFailed(QT_TR_NOOP("Failed to Create [.csv] File!"), error);
        return false;
    }
    QMessageBox::information(this, QString(),
                             tr("The Cutted File Saved:\n%1").arg(QDir::toNativeSeparators(path)));
    return true;
}

bool CAnaFormFileCut::writeRecording(const QString &path, int first, int last,
                                     const std::vector<const CChnMapAnalog *> &analogs,
                                     const std::vector<const CChnMapStatus *> &statuses)
{
    CCmtd99File cut;
    QString error;
    const float highestRate = m_cmbRate->currentData().toFloat();
    if (!cut.CutFrom(m_pFrame->recording(), first, last, analogs, statuses,
                     QFileInfo(path).fileName().toLocal8Bit(), highestRate, error)) {
        QMessageBox::warning(this, QString(), error);
        return false;
    }
    // Thinning can leave fewer samples than the range held.
    if (cut.loadedPoints < kMinCutPoints) {
        QMessageBox::warning(
            this, QString(),
            tr("The Points is too Few in Cutted File! Request NOT Less Than %1 Points!").arg(kMinCutPoints));
        return false;
    }
    // The exact-copy writer keeps primary channels and unit prefixes as the engineer sees them.
    ExactCopyFormat format;
    format.fileType = m_cmbForm->currentIndex() == FormAscii ? "ASCII" : "BINARY";
    format.revision = 1999;
    const ExactCopyResult written = SaveExactCopy(cut, path, format, &error);
    if (written == ExactCopyResult::Refused) {
        QMessageBox::warning(this, QString(), error);
        return false;
    }
    if (written == ExactCopyResult::WriteFailed) {
        // The data file is begun first; a failure that names the configuration came after it.
        const bool cfgFailed = error.contains(QFileInfo(path).fileName());
        warnWriteFailed(cfgFailed ? QT_TR_NOOP("Failed to Create [.cfg] File!")
                                  : QT_TR_NOOP("Failed to Create [.dat] File!"),
                        error);
        return false;
    }
    const QString inf = withoutExtension(path, ".cfg") + QStringLiteral(".inf");
    if (!cut.SaveInf(inf.toLocal8Bit().constData())) {
        warnWriteFailed(QT_TR_NOOP("Failed to Create [.inf] File!"), cut.saveError);
        return false;
    }
    return true;
}

void CAnaFormFileCut::slot_btnCut()
{
    if (refuseWhileBusy())
        return;
    std::vector<const CChnMapAnalog *> analogs;
    std::vector<const CChnMapStatus *> statuses;
    chosenChannels(analogs, statuses);
    if (analogs.empty() && statuses.empty()) {
        QMessageBox::warning(this, QString(), tr("Please Choose Channels to Cutted File!"));
        return;
    }
    const int points = m_pFrame->recording().loadedPoints;
    const int first = std::clamp(std::min(cursorT1(), cursorT2()), 0, std::max(points - 1, 0));
    const int last = std::clamp(std::max(cursorT1(), cursorT2()), 0, std::max(points - 1, 0));
    if (last - first + 1 < kMinCutPoints) {
        QMessageBox::warning(
            this, QString(),
            tr("The Points is too Few in Cutted File! Request NOT Less Than %1 Points!").arg(kMinCutPoints));
        return;
    }
    const QString path = outputPath();
    if (path.isEmpty() || OutputTouchesInput(m_pFrame->fileName(), path)) {
        QMessageBox::warning(
            this, QString(),
            tr("'%1' would overwrite a file of this recording.").arg(QDir::toNativeSeparators(path)));
        return;
    }
    if (m_cmbForm->currentIndex() == FormCsv) {
        if (writeCsv(path, first, last, analogs, statuses))
            renewName();
        return;
    }
    if (!writeRecording(path, first, last, analogs, statuses))
        return;
    renewName();
    if (QMessageBox::question(this, QString(), tr("The Cutted File Saved Success, Open it Now?")) ==
        QMessageBox::Yes)
        m_pFrame->requestOpen(path);
}
