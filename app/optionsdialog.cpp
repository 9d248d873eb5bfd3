#include "optionsdialog.h"

#include "globaloptions.h"
#include "globalsettings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

QComboBox *combo(QWidget *parent, const QStringList &items, int current)
{
    auto *box = new QComboBox(parent);
    box->addItems(items);
    box->setCurrentIndex(current >= 0 && current < items.size() ? current : 0);
    return box;
}

QDoubleSpinBox *number(QWidget *parent, double value, double maximum, const QString &suffix)
{
    auto *box = new QDoubleSpinBox(parent);
    box->setRange(0.0, maximum);
    box->setDecimals(4);
    box->setValue(value);
    box->setSuffix(suffix);
    return box;
}

} // namespace

COptionsDialog::COptionsDialog(CGlobalOptions &options, QWidget *parent) : QDialog(parent), m_options(options)
{
    setWindowTitle(tr("Options(&T)").remove(QLatin1String("(&T)")));
    auto *tabs = new QTabWidget(this);
    tabs->addTab(createDisplayPage(options, tabs), tr("Display"));
    tabs->addTab(createAnalysisPage(options, tabs), tr("Analysis"));
    tabs->addTab(createLineTestPage(options, tabs), tr("Line Test"));
    tabs->addTab(createToolsPage(options, tabs), tr("Tools"));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(buttons);
}

QWidget *COptionsDialog::createDisplayPage(const CGlobalOptions &options, QWidget *parent)
{
    auto *display = new QWidget(parent);
    auto *displayForm = new QFormLayout(display);
    m_language = new QComboBox(display);
    m_language->addItem(QString());
    for (const CLangInfo *language : std::as_const(options.languages))
        m_language->addItem(QString::fromLocal8Bit(language->name));
    m_language->setCurrentText(QString::fromLocal8Bit(options.language));
    displayForm->addRow(tr("Language"), m_language);
    m_codec = new QLineEdit(QString::fromLocal8Bit(options.codec), display);
    displayForm->addRow(tr("Text codec"), m_codec);
    m_style = new QLineEdit(QString::fromLocal8Bit(options.style), display);
    displayForm->addRow(tr("Style"), m_style);
    m_font = new QLineEdit(QString::fromLocal8Bit(options.font), display);
    displayForm->addRow(tr("Font family"), m_font);
    m_colorScheme = combo(display, {tr("Dark"), tr("Light"), tr("Grey")}, colorScheme);
    displayForm->addRow(tr("Colour scheme"), m_colorScheme);
    m_wheelLines = new QSpinBox(display);
    m_wheelLines->setRange(1, 500);
    m_wheelLines->setValue(options.wheelScrollLines);
    displayForm->addRow(tr("Lines per wheel step"), m_wheelLines);
    m_statusMinWidth = new QSpinBox(display);
    m_statusMinWidth->setRange(0, 10);
    m_statusMinWidth->setValue(statusMinWidth);
    displayForm->addRow(tr("Narrowest status pulse (pixels)"), m_statusMinWidth);
    const char *flagTexts[] = {QT_TR_NOOP("Hand files of a second start to the running program"),
                               QT_TR_NOOP("Open the status event list after loading"),
                               QT_TR_NOOP("Hide status channels that never change after loading"),
                               QT_TR_NOOP("Status channels before analog channels"),
                               QT_TR_NOOP("Channel names first in the name column"),
                               QT_TR_NOOP("Keep the wave view of each recording (_last.wvs)")};
    const uint32_t flagBits[] = {CGlobalOptions::SingleInstance,  CGlobalOptions::AutoStatusEvent,
                                 CGlobalOptions::AutoHideStatus0, CGlobalOptions::StatusChnAhead,
                                 CGlobalOptions::ChnNameAhead,    CGlobalOptions::AutoSaveWaveViewStatus};
    for (int i = 0; i < 6; ++i) {
        m_flags[i] = new QCheckBox(tr(flagTexts[i]), display);
        m_flags[i]->setChecked(options.stateMask & flagBits[i]);
        displayForm->addRow(QString(), m_flags[i]);
    }
    return display;
}

QWidget *COptionsDialog::createAnalysisPage(const CGlobalOptions &options, QWidget *parent)
{
    auto *analysis = new QWidget(parent);
    auto *analysisForm = new QFormLayout(analysis);
    m_dftMethod =
        combo(analysis, {tr("Rect & Sin"), tr("Rect & Cos"), tr("Trap & Sin"), tr("Trap & Cos")}, dftMethod);
    analysisForm->addRow(tr("Fourier method"), m_dftMethod);
    m_dftWin = combo(
        analysis,
        {tr("Cycle before the cursor"), tr("Cycle centred on the cursor"), tr("Cycle after the cursor")},
        dftWin);
    analysisForm->addRow(tr("Fourier window"), m_dftWin);
    m_phComp = new QCheckBox(tr("Apply phase compensation of the transformers"), analysis);
    m_phComp->setChecked(PhComp);
    analysisForm->addRow(QString(), m_phComp);
    m_timeFormat =
        combo(analysis, {QStringLiteral("ms.us"), QStringLiteral("mm:ss.us")}, options.statusTimeFormat);
    analysisForm->addRow(tr("Status time format"), m_timeFormat);
    m_timeBase =
        combo(analysis,
              {QStringLiteral("T0c"), QStringLiteral("T0"), QStringLiteral("T1"), QStringLiteral("T1Fixed")},
              options.statusTimeBase);
    analysisForm->addRow(tr("Status time base"), m_timeBase);
    return analysis;
}

QWidget *COptionsDialog::createLineTestPage(const CGlobalOptions &options, QWidget *parent)
{
    auto *line = new QWidget(parent);
    auto *lineForm = new QFormLayout(line);
    m_lineLength = number(line, options.lineParamLen, 100000.0, QStringLiteral(" km"));
    lineForm->addRow(tr("Line length"), m_lineLength);
    m_lineR = number(line, options.lineParamZ1[0], 100000.0, QStringLiteral(" Ω"));
    m_lineX = number(line, options.lineParamZ1[1], 100000.0, QStringLiteral(" Ω"));
    lineForm->addRow(tr("Positive-sequence R"), m_lineR);
    lineForm->addRow(tr("Positive-sequence X"), m_lineX);
    m_linePoints = new QSpinBox(line);
    m_linePoints->setRange(1, 1000);
    m_linePoints->setValue(options.lineParamMxPI);
    lineForm->addRow(tr("Measuring points"), m_linePoints);
    for (int i = 0; i < 2; ++i) {
        m_tv[i] = number(line, options.lineParamMxTV[i], 10000000.0, QStringLiteral(" V"));
        m_ta[i] = number(line, options.lineParamMxTA[i], 1000000.0, QStringLiteral(" A"));
    }
    lineForm->addRow(tr("Voltage transformer primary"), m_tv[0]);
    lineForm->addRow(tr("Voltage transformer secondary"), m_tv[1]);
    lineForm->addRow(tr("Current transformer primary"), m_ta[0]);
    lineForm->addRow(tr("Current transformer secondary"), m_ta[1]);
    return line;
}

QWidget *COptionsDialog::createToolsPage(const CGlobalOptions &options, QWidget *parent)
{
    auto *tools = new QWidget(parent);
    auto *toolsForm = new QFormLayout(tools);
    m_textViewer = new QLineEdit(QString::fromLocal8Bit(options.txtViewExe), tools);
    toolsForm->addRow(tr("Report viewer program"), m_textViewer);
    m_cvtLib = new QLineEdit(QString::fromLocal8Bit(options.cvtLib), tools);
    toolsForm->addRow(tr("Converter library"), m_cvtLib);
    m_anaLib = new QLineEdit(QString::fromLocal8Bit(options.anaLib), tools);
    toolsForm->addRow(tr("Analysis library"), m_anaLib);
    return tools;
}

void COptionsDialog::apply()
{
    CGlobalOptions &o = m_options;
    o.codec = m_codec->text().toLocal8Bit();
    o.style = m_style->text().toLocal8Bit();
    o.font = m_font->text().toLocal8Bit();
    colorScheme = static_cast<int16_t>(m_colorScheme->currentIndex());
    o.wheelScrollLines = m_wheelLines->value();
    statusMinWidth = m_statusMinWidth->value();
    const uint32_t flagBits[] = {CGlobalOptions::SingleInstance,  CGlobalOptions::AutoStatusEvent,
                                 CGlobalOptions::AutoHideStatus0, CGlobalOptions::StatusChnAhead,
                                 CGlobalOptions::ChnNameAhead,    CGlobalOptions::AutoSaveWaveViewStatus};
    for (int i = 0; i < 6; ++i)
        o.stateMask = m_flags[i]->isChecked() ? (o.stateMask | flagBits[i]) : (o.stateMask & ~flagBits[i]);
    dftMethod = m_dftMethod->currentIndex();
    dftWin = m_dftWin->currentIndex();
    PhComp = m_phComp->isChecked();
    o.statusTimeFormat = m_timeFormat->currentIndex();
    o.statusTimeBase = m_timeBase->currentIndex();
    o.lineParamLen = static_cast<float>(m_lineLength->value());
    o.lineParamZ1[0] = static_cast<float>(m_lineR->value());
    o.lineParamZ1[1] = static_cast<float>(m_lineX->value());
    o.lineParamMxPI = m_linePoints->value();
    for (int i = 0; i < 2; ++i) {
        o.lineParamMxTV[i] = static_cast<float>(m_tv[i]->value());
        o.lineParamMxTA[i] = static_cast<float>(m_ta[i]->value());
    }
    o.txtViewExe = m_textViewer->text().toLocal8Bit();
    o.cvtLib = m_cvtLib->text().toLocal8Bit();
    o.anaLib = m_anaLib->text().toLocal8Bit();
    if (!m_language->currentText().isEmpty())
        o.selectLanguage(m_language->currentText().toLocal8Bit());
}
