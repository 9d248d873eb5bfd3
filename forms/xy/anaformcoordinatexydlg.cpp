#include "anaformcoordinatexydlg.h"
#include "dialogbuttons.h"

#include "anaformbase.h"
#include "channelcombo.h"
#include "chnmap.h"
#include "cmtd99file.h"

#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

void paintColourButton(QPushButton *button, uint32_t colour)
{
    QPixmap swatch(24, 12);
    swatch.fill(QColor::fromRgba(colour));
    button->setIcon(QIcon(swatch));
}

} // namespace

CAnaFormCoordinateXYDlgReset::CAnaFormCoordinateXYDlgReset(const CCmtd99File &file, uint32_t displayFlags,
                                                           CChnMapAnalog *x, CChnMapAnalog *y,
                                                           QWidget *parent)
    : QDialog(parent), m_x(new QComboBox(this)), m_y(new QComboBox(this))
{
    setWindowTitle(tr("Choose Channels for [X-Y Custom Coordinate]"));
    setWindowIcon(QIcon(QStringLiteral(":/images/CoordinateXY.png")));
    auto *group = new QGroupBox(tr("Choose Channels"), this);
    auto *form = new QFormLayout(group);
    FillChannelCombo(m_x, file, displayFlags, x);
    FillChannelCombo(m_y, file, displayFlags, y);
    form->addRow(tr("X Axis"), m_x);
    form->addRow(tr("Y Axis"), m_y);
    auto *column = new QVBoxLayout(this);
    column->addWidget(group);
    column->addWidget(OkCancelButtons(this));
    setMinimumWidth(380);
}

CChnMapAnalog *CAnaFormCoordinateXYDlgReset::channelX() const
{
    return ComboChannel(m_x);
}

CChnMapAnalog *CAnaFormCoordinateXYDlgReset::channelY() const
{
    return ComboChannel(m_y);
}

void CAnaFormCoordinateXYDlgReset::accept()
{
    if (!channelX()) {
        QMessageBox::warning(this, QString(), tr("Please Choose X Axis Channels!"));
        return;
    }
    if (!channelY()) {
        QMessageBox::warning(this, QString(), tr("Please Choose Y Axis Channels!"));
        return;
    }
    QDialog::accept();
}

CAnaFormCoordinateXYBoundDlgEntry::CAnaFormCoordinateXYBoundDlgEntry(const QString &title,
                                                                     const QStringList &labels,
                                                                     const QStringList &messages,
                                                                     const std::vector<double> &values,
                                                                     uint32_t colour, QWidget *parent)
    : QDialog(parent), m_messages(messages), m_values(values), m_colour(colour),
      m_colourButton(new QPushButton(tr("Colour"), this))
{
    setWindowTitle(title);
    auto *form = new QFormLayout;
    for (int i = 0; i < labels.size(); ++i) {
        auto *edit = new QLineEdit(QString::number(values[size_t(i)], 'f', 6), this);
        form->addRow(labels[i], edit);
        m_edits.push_back(edit);
    }
    paintColourButton(m_colourButton, m_colour);
    form->addRow(QString(), m_colourButton);
    connect(m_colourButton, &QPushButton::clicked, this, [this] {
        const QColor chosen = QColorDialog::getColor(QColor::fromRgba(m_colour), this);
        if (chosen.isValid()) {
            m_colour = chosen.rgba();
            paintColourButton(m_colourButton, m_colour);
        }
    });
    auto *column = new QVBoxLayout(this);
    column->addLayout(form);
    column->addWidget(OkCancelButtons(this));
}

void CAnaFormCoordinateXYBoundDlgEntry::accept()
{
    for (size_t i = 0; i < m_edits.size(); ++i) {
        bool ok = false;
        const double value = m_edits[i]->text().trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(value)) {
            QMessageBox::warning(this, QString(), m_messages.value(int(i)));
            m_edits[i]->setFocus();
            return;
        }
        m_values[i] = value;
    }
    QDialog::accept();
}

CAnaFormCoordinateXYBoundDlgLineAB::CAnaFormCoordinateXYBoundDlgLineAB(const XYBound &bound, QWidget *parent)
    : CAnaFormCoordinateXYBoundDlgEntry(
          tr("Line(Y=AX+B)"), {tr("Slope (A)................."), tr("Distance (B)(Secondary)...")},
          {tr("[Slope (A)] Error!"), tr("[Distance (B)] Error!")}, {bound.a, bound.b}, bound.colour, parent)
{}

CAnaFormCoordinateXYBoundDlgLineC::CAnaFormCoordinateXYBoundDlgLineC(const XYBound &bound, QWidget *parent)
    : CAnaFormCoordinateXYBoundDlgEntry(tr("Plumb Line(X=C)"), {tr("Const (C)(Secondary)......")},
                                        {tr("[Const (C)] Error!")}, {bound.c}, bound.colour, parent)
{}

CAnaFormCoordinateXYBoundDlgCircle::CAnaFormCoordinateXYBoundDlgCircle(const XYBound &bound, QWidget *parent)
    : CAnaFormCoordinateXYBoundDlgEntry(
          tr("Circle"),
          {tr("X Coordinate of Centre(Secondary)..."), tr("Y Coordinate of Centre(Secondary)..."),
           tr("Radius of the Circle(Secondary).....")},
          {tr("[X Coordinate of Centre] Error!"), tr("[Y Coordinate of Centre] Error!"),
           tr("[Radius of the Circle] Error!")},
          {bound.xc, bound.yc, bound.r}, bound.colour, parent)
{}

CAnaFormCoordinateXYBoundDlg::CAnaFormCoordinateXYBoundDlg(const std::vector<XYBound> &bounds,
                                                           QWidget *parent)
    : QDialog(parent), m_bounds(bounds), m_list(new QTreeWidget(this))
{
    setWindowTitle(tr("[X-Y Custom Coordinate] Boundary Setup"));
    setWindowIcon(QIcon(QStringLiteral(":/images/CoordinateXY.png")));
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels({tr("Boundary Type"), tr("Boundary Settings")});
    m_list->setColumnWidth(0, 120);
    auto *buttons = new QVBoxLayout;
    const struct
    {
        const char *text;
        std::function<void()> run;
    } actions[] = {
        {QT_TR_NOOP("Add Line(Y=AX+B)"), [this] { add(XYBound::KindLine); }},
        {QT_TR_NOOP("Add Plumb Line(X=C)"), [this] { add(XYBound::KindPlumbLine); }},
        {QT_TR_NOOP("Add Circle"), [this] { add(XYBound::KindCircle); }},
        {QT_TR_NOOP("Edit"), [this] { slot_btnEdit(); }},
        {QT_TR_NOOP("Delete"), [this] { slot_btnDelete(); }},
        {QT_TR_NOOP("Save"), [this] { slot_btnSave(); }},
        {QT_TR_NOOP("Load"), [this] { slot_btnLoad(); }},
    };
    for (const auto &a : actions) {
        auto *button = new QPushButton(tr(a.text), this);
        connect(button, &QPushButton::clicked, this, a.run);
        buttons->addWidget(button);
    }
    buttons->addStretch(1);
    auto *row = new QHBoxLayout;
    row->addWidget(m_list, 1);
    row->addLayout(buttons);
    auto *column = new QVBoxLayout(this);
    column->addLayout(row);
    column->addWidget(OkCancelButtons(this));
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, [this] { slot_btnEdit(); });
    resize(620, 320);
    refill();
}

void CAnaFormCoordinateXYBoundDlg::refill()
{
    m_list->clear();
    for (const XYBound &bound : m_bounds) {
        auto *item = new QTreeWidgetItem(m_list, {XYBoundKindText(bound), XYBoundSettingsText(bound)});
        item->setForeground(0, QColor::fromRgba(bound.colour));
    }
}

bool CAnaFormCoordinateXYBoundDlg::editBound(XYBound &bound)
{
    std::unique_ptr<CAnaFormCoordinateXYBoundDlgEntry> dialog;
    if (bound.kind == XYBound::KindLine)
        dialog = std::make_unique<CAnaFormCoordinateXYBoundDlgLineAB>(bound, this);
    else if (bound.kind == XYBound::KindPlumbLine)
        dialog = std::make_unique<CAnaFormCoordinateXYBoundDlgLineC>(bound, this);
    else
        dialog = std::make_unique<CAnaFormCoordinateXYBoundDlgCircle>(bound, this);
    if (dialog->exec() != QDialog::Accepted)
        return false;
    const std::vector<double> v = dialog->values();
    bound.colour = dialog->colour();
    if (bound.kind == XYBound::KindLine) {
        bound.a = v[0];
        bound.b = v[1];
    } else if (bound.kind == XYBound::KindPlumbLine) {
        bound.c = v[0];
    } else {
        bound.xc = v[0];
        bound.yc = v[1];
        bound.r = v[2];
    }
    return true;
}

void CAnaFormCoordinateXYBoundDlg::add(int kind)
{
    XYBound bound;
    bound.kind = kind;
    bound.colour = 0xFFC00000u;
    if (!editBound(bound))
        return;
    m_bounds.push_back(bound);
    refill();
}

void CAnaFormCoordinateXYBoundDlg::slot_btnEdit()
{
    const int row = m_list->indexOfTopLevelItem(m_list->currentItem());
    if (row < 0 || size_t(row) >= m_bounds.size() || !editBound(m_bounds[size_t(row)]))
        return;
    refill();
}

void CAnaFormCoordinateXYBoundDlg::slot_btnDelete()
{
    const int row = m_list->indexOfTopLevelItem(m_list->currentItem());
    if (row < 0 || size_t(row) >= m_bounds.size())
        return;
    m_bounds.erase(m_bounds.begin() + row);
    refill();
}

namespace {
QString &lastTxbFolder()
{
    static QString folder;
    return folder;
}
} // namespace

void CAnaFormCoordinateXYBoundDlg::slot_btnSave()
{
    const QString path = QFileDialog::getSaveFileName(
        this, QString(), lastTxbFolder(), tr("TRWK X-Y Coordinate Boundary Settings File(*.txb)"));
    if (path.isEmpty())
        return;
    lastTxbFolder() = QFileInfo(path).absolutePath();
    QString message;
    if (!SaveXYBounds(path, m_bounds, message))
        QMessageBox::warning(this, QString(), message);
}

void CAnaFormCoordinateXYBoundDlg::slot_btnLoad()
{
    const QString path = QFileDialog::getOpenFileName(
        this, QString(), lastTxbFolder(), tr("TRWK X-Y Coordinate Boundary Settings File(*.txb)"));
    if (path.isEmpty())
        return;
    lastTxbFolder() = QFileInfo(path).absolutePath();
    QString message;
    if (!LoadXYBounds(path, m_bounds, message))
        QMessageBox::warning(this, QString(), message);
    refill();
}
