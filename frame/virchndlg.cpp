#include "virchndlg.h"
#include "dialogbuttons.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "virtualchannel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QSpinBox>
#include <QVBoxLayout>

CVirChnDlgBase::CVirChnDlgBase(CCmtd99File &file, CChnMapAnalog &source, int kind, QWidget *parent)
    : QDialog(parent), m_file(file), m_source(source), m_options(new QFormLayout),
      m_name(new QLineEdit(this)), m_rename(new QCheckBox(tr("Rename Channel"), this))
{
    m_params.kind = kind;
    setWindowIcon(QIcon(QStringLiteral(":/images/VirChnCreateMenu.png")));
    auto *column = new QVBoxLayout(this);
    auto *head = new QFormLayout;
    head->addRow(tr("Source Channel"), new QLabel(file.Text(source.Name()), this));
    column->addLayout(head);
    column->addLayout(m_options);
    auto *nameRow = new QHBoxLayout;
    m_name->setObjectName(QStringLiteral("nameEdit"));
    m_name->setReadOnly(true);
    m_name->setMinimumWidth(320);
    nameRow->addWidget(m_name, 1);
    nameRow->addWidget(m_rename);
    column->addLayout(nameRow);
    column->addWidget(OkCancelButtons(this));
    connect(m_rename, &QCheckBox::stateChanged, this, &CVirChnDlgBase::slot_chkRenameStateChanged);
    optionsChanged();
}

void CVirChnDlgBase::optionsChanged()
{
    readOptions();
    if (!m_rename->isChecked())
        m_name->setText(SeriesJobDefaultName(m_file.Text(m_source.Name()), m_params));
}

void CVirChnDlgBase::slot_chkRenameStateChanged(int state)
{
    m_name->setReadOnly(state == Qt::Unchecked);
    if (state == Qt::Unchecked)
        optionsChanged();
    else
        m_name->setFocus();
}

void CVirChnDlgBase::accept()
{
    const QString name = m_name->text().trimmed();
    if (name.isEmpty()) {
        QMessageBox::warning(this, QString(), tr("Please specify the name of the new virtual channel!"));
        return;
    }
    readOptions();
    QString message;
    m_channel = MakeVirtualChannel(m_file, name.toUtf8(), message);
    if (!m_channel) {
        QMessageBox::warning(this, QString(), message);
        QDialog::reject();
        return;
    }
    DescribeVirtualChannel(*m_channel, m_source, m_params);
    QDialog::accept();
}

CVirChnDlgDelta::CVirChnDlgDelta(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent)
    : CVirChnDlgBase(file, source, SeriesJobDelta, parent), m_method(new QComboBox(this))
{
    setWindowTitle(tr("[Delta] Virtual Channel Setup"));
    m_method->addItems({tr("Next Cycle subtract Current Cycle"), tr("All Cycles subtract First Cycle"),
                        tr("First-half Cycle and Second-half Cycle Sum")});
    options()->addRow(tr("Delta Method"), m_method);
    connect(m_method, &QComboBox::currentIndexChanged, this, &CVirChnDlgDelta::optionsChanged);
    optionsChanged();
}

void CVirChnDlgDelta::readOptions()
{
    m_params.mode = m_method->currentIndex();
}

CVirChnDlgAvg::CVirChnDlgAvg(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent)
    : CVirChnDlgBase(file, source, SeriesJobAverage, parent)
{
    setWindowTitle(tr("[DC Part] Virtual Channel Setup"));
}

CVirChnDlgHm::CVirChnDlgHm(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent)
    : CVirChnDlgBase(file, source, SeriesJobHarmonic, parent), m_order(new QSpinBox(this)),
      m_dc(new QCheckBox(tr("DC Part"), this)), m_curve(new QComboBox(this))
{
    setWindowTitle(tr("[Harmonious Part] Setup"));
    m_order->setRange(1, 99);
    m_order->setValue(1);
    m_curve->addItems({tr("Eff-Value Curve"), tr("R-Part Curve"), tr("X-Part Curve")});
    auto *orderRow = new QHBoxLayout;
    orderRow->addWidget(m_order, 1);
    orderRow->addWidget(m_dc);
    options()->addRow(tr("Harmonious Times"), orderRow);
    options()->addRow(tr("Type of Curve"), m_curve);
    connect(m_order, &QSpinBox::valueChanged, this, &CVirChnDlgHm::optionsChanged);
    connect(m_curve, &QComboBox::currentIndexChanged, this, &CVirChnDlgHm::optionsChanged);
    connect(m_dc, &QCheckBox::toggled, this, [this](bool dc) {
        // The DC part is order 0, a single curve.
        m_order->setEnabled(!dc);
        m_curve->setEnabled(!dc);
        optionsChanged();
    });
    optionsChanged();
}

void CVirChnDlgHm::readOptions()
{
    m_params.order = m_dc->isChecked() ? 0 : m_order->value();
    m_params.part = m_curve->currentIndex();
}

CVirChnDlgFilterHamm::CVirChnDlgFilterHamm(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent)
    : CVirChnDlgBase(file, source, SeriesJobHamming, parent), m_endFreq(new QDoubleSpinBox(this)),
      m_length(new QSpinBox(this))
{
    setWindowTitle(tr("[Hamming-Window Filter] Setup"));
    m_endFreq->setRange(0.1, 1000.0);
    m_endFreq->setDecimals(1);
    m_endFreq->setValue(double(m_params.endFreq));
    m_endFreq->setSuffix(QStringLiteral(" Hz"));
    m_length->setRange(1, 1024);
    m_length->setValue(m_params.length);
    m_length->setSuffix(QLatin1Char(' ') + tr("Point"));
    options()->addRow(tr("End-Freq."), m_endFreq);
    options()->addRow(tr("Filter Length"), m_length);
    connect(m_endFreq, &QDoubleSpinBox::valueChanged, this, &CVirChnDlgFilterHamm::optionsChanged);
    connect(m_length, &QSpinBox::valueChanged, this, &CVirChnDlgFilterHamm::optionsChanged);
}

void CVirChnDlgFilterHamm::readOptions()
{
    m_params.endFreq = float(m_endFreq->value());
    m_params.length = m_length->value();
}

CVirChnDlgFilterDiff::CVirChnDlgFilterDiff(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent)
    : CVirChnDlgBase(file, source, SeriesJobOnePointDiff, parent)
{
    setWindowTitle(tr("[One-Point-Diff. Filter] Setup"));
}

CVirChnDlgFreqX0::CVirChnDlgFreqX0(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent)
    : CVirChnDlgBase(file, source, SeriesJobFreqZeroCross, parent)
{
    setWindowTitle(tr("[Signal Freq.(Cross 0 Method)] Setup"));
}

CVirChnDlgFreqDft::CVirChnDlgFreqDft(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent)
    : CVirChnDlgBase(file, source, SeriesJobFreqDft, parent)
{
    setWindowTitle(tr("[Base Freq.(DFT Insert Method)] Setup"));
    // The method's two-cycle quotient turns the phase step the other way: a deviation from the
    // rated frequency reads mirrored. Say so where the curve is asked for.
    auto *note = new QLabel(tr("Note: this method reads a deviation from the rated frequency mirrored "
                               "(50.6 Hz on a 50 Hz channel reads about 49.4 Hz). The zero-cross method "
                               "gives the signal's own frequency."),
                            this);
    note->setWordWrap(true);
    note->setStyleSheet(QStringLiteral("background: #fff4c2; color: #3a3000; padding: 4px;"));
    options()->addRow(note);
}

CVirChnDlgBase *MakeVirChnDialog(int kind, CCmtd99File &file, CChnMapAnalog &source, QWidget *parent)
{
    switch (kind) {
    case SeriesJobDelta:
        return new CVirChnDlgDelta(file, source, parent);
    case SeriesJobAverage:
        return new CVirChnDlgAvg(file, source, parent);
    case SeriesJobHarmonic:
        return new CVirChnDlgHm(file, source, parent);
    case SeriesJobHamming:
        return new CVirChnDlgFilterHamm(file, source, parent);
    case SeriesJobOnePointDiff:
        return new CVirChnDlgFilterDiff(file, source, parent);
    case SeriesJobFreqZeroCross:
        return new CVirChnDlgFreqX0(file, source, parent);
    case SeriesJobFreqDft:
        return new CVirChnDlgFreqDft(file, source, parent);
    default:
        return nullptr;
    }
}
