#include "faultfindpage0.h"

#include "chnmap.h"
#include "chntext.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "faultend.h"
#include "faultfindwizard.h"
#include "units.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

const char *const kTvPrimary[] = {" 1000.0", " 750.0", " 500.0", " 330.0",
                                  " 220.0",  " 110.0", "  35.0", "  10.0"};
const char *const kTvSecondary[] = {" 100.0"};
const char *const kTaPrimary[] = {"3000.0", "2500.0", "2000.0", "1250.0", "1000.0", " 600.0", " 300.0"};
const char *const kTaSecondary[] = {"   5.0", "   1.0"};

float comboNumber(const QComboBox *combo)
{
    bool ok = false;
    const double value = combo->currentText().trimmed().toDouble(&ok);
    return ok ? float(value) : 0.0f;
}

const CChnMapAnalog *channelOf(const QComboBox *combo)
{
    return reinterpret_cast<const CChnMapAnalog *>(combo->currentData().value<quintptr>());
}

// Chooses the store of the channel with number `index` in a channel combo; nothing for none.
void chooseChannel(QComboBox *combo, const CCmtd99File &file, int index)
{
    if (index < 1)
        return;
    if (const CChnMapAnalog *map = file.FindAnalogMap(index)) {
        const int at = combo->findData(QVariant::fromValue(quintptr(map)));
        if (at >= 0)
            combo->setCurrentIndex(at);
    }
}

} // namespace

CFaultFind2EndGroupPage0::CFaultFind2EndGroupPage0(const QString &title,
                                                   const QList<CCmtdChildFrame *> &recordings, int chosen,
                                                   QWidget *parent)
    : QGroupBox(title, parent), m_recordings(recordings), m_cmbFile(new QComboBox(this)),
      m_cmbLine(new QComboBox(this))
{
    auto *grid = new QGridLayout(this);
    grid->addWidget(new QLabel(tr("COMTRADE File"), this), 0, 0);
    grid->addWidget(m_cmbFile, 0, 1, 1, 3);
    grid->addWidget(new QLabel(tr("Line"), this), 1, 0);
    grid->addWidget(m_cmbLine, 1, 1, 1, 3);
    const QString headers[3] = {tr("ACV"), tr("ACC1"), tr("ACC2")};
    for (int column = 0; column < 3; ++column)
        grid->addWidget(new QLabel(headers[column], this), 2, column + 1);
    for (int p = 0; p < 3; ++p) {
        grid->addWidget(new QLabel(QStringLiteral("%1").arg(QLatin1Char(char('A' + p))), this), 3 + p, 0);
        m_cmbU[p] = new QComboBox(this);
        grid->addWidget(m_cmbU[p], 3 + p, 1);
        for (int g = 0; g < 2; ++g) {
            m_cmbI[g][p] = new QComboBox(this);
            grid->addWidget(m_cmbI[g][p], 3 + p, 2 + g);
        }
    }
    grid->addWidget(new QLabel(tr("Weight"), this), 6, 0);
    for (int g = 0; g < 2; ++g) {
        m_weight[g] = new QSpinBox(this);
        m_weight[g]->setRange(-100, 100);
        m_weight[g]->setValue(1);
        grid->addWidget(m_weight[g], 6, 2 + g);
    }
    m_tvPrimary = ratingCombo(kTvPrimary, int(std::size(kTvPrimary)), " 220.0");
    m_tvSecondary = ratingCombo(kTvSecondary, int(std::size(kTvSecondary)), " 100.0");
    m_taPrimary = ratingCombo(kTaPrimary, int(std::size(kTaPrimary)), "1250.0");
    m_taSecondary = ratingCombo(kTaSecondary, int(std::size(kTaSecondary)), "   5.0");
    auto *tv = new QHBoxLayout;
    tv->addWidget(m_tvPrimary);
    tv->addWidget(new QLabel(tr("kV /"), this));
    tv->addWidget(m_tvSecondary);
    tv->addWidget(new QLabel(tr("V"), this));
    auto *ta = new QHBoxLayout;
    ta->addWidget(m_taPrimary);
    ta->addWidget(new QLabel(tr("A /"), this));
    ta->addWidget(m_taSecondary);
    ta->addWidget(new QLabel(tr("A"), this));
    grid->addWidget(new QLabel(tr("Rating of TV"), this), 7, 0);
    grid->addLayout(tv, 7, 1, 1, 3);
    grid->addWidget(new QLabel(tr("Rating of TA"), this), 8, 0);
    grid->addLayout(ta, 8, 1, 1, 3);
    m_kf = new QDoubleSpinBox(this);
    m_kf->setDecimals(3);
    m_kf->setRange(0.0, 10.0);
    m_kf->setSingleStep(0.01);
    m_kf->setValue(0.15);
    m_kf->setToolTip(tr("Pick-up of the fault's current edge, as a share of the TA secondary rating"));
    grid->addWidget(new QLabel(tr("Kf"), this), 9, 0);
    grid->addWidget(m_kf, 9, 1);

    for (CCmtdChildFrame *frame : recordings)
        m_cmbFile->addItem(frame->titleText());
    m_cmbFile->setCurrentIndex(qBound(-1, chosen, int(recordings.size()) - 1));
    fillRecording();
    connect(m_cmbFile, &QComboBox::currentIndexChanged, this, &CFaultFind2EndGroupPage0::fillRecording);
    connect(m_cmbLine, &QComboBox::currentIndexChanged, this, &CFaultFind2EndGroupPage0::presetFromLine);
}

QComboBox *CFaultFind2EndGroupPage0::ratingCombo(const char *const presets[], int count, const char *initial)
{
    auto *combo = new QComboBox(this);
    combo->setEditable(true);
    for (int i = 0; i < count; ++i)
        combo->addItem(QLatin1String(presets[i]));
    combo->setCurrentText(QLatin1String(initial));
    return combo;
}

CCmtdChildFrame *CFaultFind2EndGroupPage0::recording() const
{
    const int at = m_cmbFile->currentIndex();
    return at >= 0 && at < m_recordings.size() ? m_recordings[at] : nullptr;
}

void CFaultFind2EndGroupPage0::fillRecording()
{
    const CCmtdChildFrame *frame = recording();
    const QSignalBlocker quiet(m_cmbLine);
    m_cmbLine->clear();
    m_cmbLine->addItem(tr("[None]"), QVariant::fromValue(quintptr(0)));
    QList<QComboBox *> channelCombos = {m_cmbU[0], m_cmbU[1], m_cmbU[2]};
    for (int g = 0; g < 2; ++g)
        channelCombos << m_cmbI[g][0] << m_cmbI[g][1] << m_cmbI[g][2];
    for (QComboBox *combo : channelCombos) {
        combo->clear();
        combo->addItem(tr("[Choose Nothing]"), QVariant::fromValue(quintptr(0)));
    }
    if (!frame)
        return;
    const CCmtd99File &file = frame->recording();
    for (const auto &line : file.lineUnits)
        m_cmbLine->addItem(file.Text(line->name), QVariant::fromValue(quintptr(line.get())));
    for (const auto &map : file.analogMaps) {
        const bool voltage = map->Class() == ClassACV;
        const bool current = map->Class() == ClassACC;
        if (!voltage && !current)
            continue;
        const QString name = QString::fromLocal8Bit(DisplayName(*map, 0)).trimmed();
        for (int p = 0; p < 3; ++p) {
            QComboBox *combos[3] = {m_cmbU[p], m_cmbI[0][p], m_cmbI[1][p]};
            for (int k = voltage ? 0 : 1; k < (voltage ? 1 : 3); ++k)
                combos[k]->addItem(name, QVariant::fromValue(quintptr(map.get())));
        }
    }
    // A recording with one line is that line's end.
    if (file.lineUnits.size() == 1)
        m_cmbLine->setCurrentIndex(1);
    presetFromLine(m_cmbLine->currentIndex());
}

void CFaultFind2EndGroupPage0::presetFromLine(int index)
{
    const auto *line =
        reinterpret_cast<const CmtdInfTrwk_UnitLine *>(m_cmbLine->itemData(index).value<quintptr>());
    const CCmtdChildFrame *frame = recording();
    if (line && frame) {
        const CCmtd99File &file = frame->recording();
        for (int p = 0; p < 3; ++p) {
            if (line->tvCount > 0)
                chooseChannel(m_cmbU[p], file, line->tvChns[0][size_t(p)]);
            chooseChannel(m_cmbI[0][p], file, line->taChns[size_t(p)]);
            chooseChannel(m_cmbI[1][p], file, line->taChns2[size_t(p)]);
        }
        m_weight[0]->setValue(line->taPolarity < 0 ? -1 : 1);
        m_weight[1]->setValue(line->taPolarity2 < 0 ? -1 : 1);
    }
    Q_EMIT lineChanged(this, line);
}

void CFaultFind2EndGroupPage0::announceLine()
{
    Q_EMIT lineChanged(
        this, reinterpret_cast<const CmtdInfTrwk_UnitLine *>(m_cmbLine->currentData().value<quintptr>()));
}

void CFaultFind2EndGroupPage0::store(FaultEnd &end) const
{
    end.title = title();
    end.file = nullptr;
    if (const CCmtdChildFrame *frame = recording()) {
        end.file = &frame->recording();
        end.fileName = frame->currentFileName();
    }
    end.line = reinterpret_cast<const CmtdInfTrwk_UnitLine *>(m_cmbLine->currentData().value<quintptr>());
    for (int p = 0; p < 3; ++p) {
        end.voltage[p] = channelOf(m_cmbU[p]);
        for (int g = 0; g < 2; ++g)
            end.current[g][p] = channelOf(m_cmbI[g][p]);
    }
    for (int g = 0; g < 2; ++g)
        end.weight[g] = int16_t(m_weight[g]->value());
    end.tvPrimary = comboNumber(m_tvPrimary) * 1000.0f;
    end.tvSecondary = comboNumber(m_tvSecondary);
    end.taPrimary = comboNumber(m_taPrimary);
    end.taSecondary = comboNumber(m_taSecondary);
    end.Kf = float(m_kf->value());
}

CFaultFind2Page0::CFaultFind2Page0(CFaultFind2Wizard *wizard) : m_wizard(wizard)
{
    setTitle(tr("Ends and Line"));
    setSubTitle(tr("Choose the recording of each end of the line, its channels and transformer ratings, "
                   "and the line's data."));
    const QList<CCmtdChildFrame *> &recordings = wizard->recordings();
    auto *column = new QVBoxLayout(this);
    auto *ends = new QHBoxLayout;
    for (int e = 0; e < 2; ++e) {
        // End M proposes the recording the wizard was opened from, End N the next one.
        m_groups[e] = new CFaultFind2EndGroupPage0(e == 0 ? tr("End M") : tr("End N"), recordings,
                                                   e == 0 ? 0 : (recordings.size() > 1 ? 1 : 0), this);
        ends->addWidget(m_groups[e]);
        connect(m_groups[e], &CFaultFind2EndGroupPage0::lineChanged, this,
                &CFaultFind2Page0::slot_lineChanged);
    }
    column->addLayout(ends);
    auto *lineBox = new QGroupBox(tr("Line"), this);
    auto *form = new QGridLayout(lineBox);
    const QString labels[6] = {tr("Length(km)"),  tr("Z1(omh/km)=R1"), tr("+jX1"),
                               tr("C1(puF/km)="), tr("R0(omh/km)"),    tr("X0(omh/km)")};
    for (int i = 0; i < 6; ++i) {
        m_lineFields[i] = new QDoubleSpinBox(lineBox);
        m_lineFields[i]->setDecimals(i == 0 ? 3 : 6);
        m_lineFields[i]->setRange(0.0, i == 0 ? 10000.0 : 1000.0);
        form->addWidget(new QLabel(labels[i], lineBox), i / 4, (i % 4) * 2);
        form->addWidget(m_lineFields[i], i / 4, (i % 4) * 2 + 1);
    }
    m_lineFields[4]->setToolTip(tr("Zero sequence data serve the single-ended estimates only"));
    m_lineFields[5]->setToolTip(m_lineFields[4]->toolTip());
    column->addWidget(lineBox);
    // The line data of a line chosen on opening.
    for (CFaultFind2EndGroupPage0 *group : m_groups)
        group->announceLine();
}

void CFaultFind2Page0::slot_lineChanged(CFaultFind2EndGroupPage0 *, const CmtdInfTrwk_UnitLine *line)
{
    if (!line)
        return;
    const float values[6] = {line->length, line->r1, line->x1, line->c1, line->r0, line->x0};
    for (int i = 0; i < 6; ++i)
        m_lineFields[i]->setValue(double(values[i]));
}

void CFaultFind2Page0::storeLine(FaultLine &line) const
{
    line.length = m_lineFields[0]->value();
    line.R1 = m_lineFields[1]->value();
    line.X1 = m_lineFields[2]->value();
    line.C1 = m_lineFields[3]->value();
    line.R0 = m_lineFields[4]->value();
    line.X0 = m_lineFields[5]->value();
}

bool CFaultFind2Page0::validatePage()
{
    QStringList messages;
    bool ok = true;
    for (int e = 0; e < 2 && ok; ++e) {
        m_groups[e]->store(m_wizard->m_ends[e]);
        ok = CheckFaultEnd(m_wizard->m_ends[e], messages);
    }
    storeLine(m_wizard->m_line);
    if (ok)
        ok = CheckFaultLine(m_wizard->m_line, messages);
    if (!ok)
        QMessageBox::warning(this, QString(), messages.value(0));
    return ok;
}
