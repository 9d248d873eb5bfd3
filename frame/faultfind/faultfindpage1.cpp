#include "faultfindpage1.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "faultend.h"
#include "faultfindwizard.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cmath>

CFaultWindowView::CFaultWindowView(QWidget *parent) : QWidget(parent)
{
    setMinimumHeight(160);
    setCursor(Qt::CrossCursor);
}

void CFaultWindowView::setStart(int start)
{
    m_start = start;
    update();
}

void CFaultWindowView::span(int &from, int &to) const
{
    const int p = std::max(PointsPerWindow(*m_end), 1);
    from = std::max(m_end->segment.first, m_start - 3 * p);
    to = std::min(m_end->segment.end, m_start + 4 * p);
}

void CFaultWindowView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    if (!m_end || !m_end->file || m_end->segment.end <= m_end->segment.first)
        return;
    int from = 0;
    int to = 0;
    span(from, to);
    if (to - from < 2)
        return;
    const double dx = double(width() - 1) / double(to - from - 1);
    const int p = std::max(PointsPerWindow(*m_end), 1);
    QColor shade = palette().highlight().color();
    shade.setAlpha(50);
    const int x0 = int((m_start - from) * dx);
    const int x1 = int((m_start + p - from) * dx);
    painter.fillRect(QRect(x0, 0, x1 - x0, height()), shade);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const int band = height() / 2;
    // Voltages above, the first current group below, each band scaled by its own peak.
    const CChnMapAnalog *const bands[2][3] = {
        {m_end->voltage[0], m_end->voltage[1], m_end->voltage[2]},
        {m_end->current[0][0], m_end->current[0][1], m_end->current[0][2]}};
    for (int b = 0; b < 2; ++b) {
        float peak = 0.0f;
        for (const CChnMapAnalog *chn : bands[b]) {
            for (int n = from; chn && n < to; ++n)
                peak = std::max(peak, std::fabs(chn->Value(n)));
        }
        const double mid = band * b + band / 2.0;
        const double scale = peak > 0.0f ? (band / 2.0 - 4.0) / peak : 0.0;
        painter.setPen(palette().mid().color());
        painter.drawLine(0, int(mid), width(), int(mid));
        for (const CChnMapAnalog *chn : bands[b]) {
            if (!chn)
                continue;
            QPainterPath path;
            for (int n = from; n < to; ++n) {
                const QPointF point((n - from) * dx, mid - chn->Value(n) * scale);
                if (n == from)
                    path.moveTo(point);
                else
                    path.lineTo(point);
            }
            painter.setPen(QPen(QColor::fromRgba(chn->colour), 1.2));
            painter.drawPath(path);
        }
        painter.setPen(palette().text().color());
        painter.drawText(QRect(4, band * b + 2, 200, fontMetrics().height()), Qt::AlignLeft,
                         b == 0 ? tr("Voltages") : tr("Currents (ACC1)"));
    }
}

void CFaultWindowView::mousePressEvent(QMouseEvent *event)
{
    if (!m_end || event->button() != Qt::LeftButton)
        return;
    int from = 0;
    int to = 0;
    span(from, to);
    if (to - from < 2 || width() < 2)
        return;
    const double at = event->position().x() / double(width() - 1) * double(to - from - 1);
    Q_EMIT startChosen(from + int(std::lround(at)));
}

CFaultFind2EndGroupPage1::CFaultFind2EndGroupPage1(QWidget *parent)
    : QGroupBox(parent), m_view(new CFaultWindowView(this)), m_start(new QSpinBox(this))
{
    auto *column = new QVBoxLayout(this);
    column->addWidget(m_view, 1);
    auto *row = new QHBoxLayout;
    row->addWidget(new QLabel(tr("Start of Data Window"), this));
    m_start->setObjectName(QStringLiteral("windowStart"));
    row->addWidget(m_start);
    auto *automatic = new QPushButton(tr("Automatic"), this);
    automatic->setToolTip(tr("A cycle before the fault current settles, found from its edge"));
    row->addWidget(automatic);
    row->addStretch(1);
    column->addLayout(row);
    connect(m_view, &CFaultWindowView::startChosen, m_start, &QSpinBox::setValue);
    connect(m_start, &QSpinBox::valueChanged, m_view, &CFaultWindowView::setStart);
    connect(automatic, &QPushButton::clicked, this, [this] {
        if (m_end)
            m_start->setValue(AutoDataWindow(*m_end));
    });
}

void CFaultFind2EndGroupPage1::showEnd(FaultEnd &end, const QString &title)
{
    m_end = &end;
    setTitle(title);
    const int start = AutoDataWindow(end);
    m_view->setEnd(&end);
    m_start->setRange(0, end.file ? std::max(end.file->loadedPoints - 1, 0) : 0);
    m_start->setValue(start);
    m_view->setStart(start);
}

int CFaultFind2EndGroupPage1::start() const
{
    return m_start->value();
}

CFaultFind2Page1::CFaultFind2Page1(CFaultFind2Wizard *wizard) : m_wizard(wizard)
{
    setTitle(tr("Data Windows"));
    setSubTitle(tr("Each end's window (shaded) is placed a cycle before its fault current settles. Click "
                   "the curves or change the start to move it."));
    auto *column = new QVBoxLayout(this);
    for (auto &group : m_groups) {
        group = new CFaultFind2EndGroupPage1(this);
        column->addWidget(group);
    }
}

void CFaultFind2Page1::initializePage()
{
    static const char *const titles[2] = {QT_TR_NOOP("End M: %s"), QT_TR_NOOP("End N: %s")};
    for (int e = 0; e < 2; ++e) {
        FaultEnd &end = m_wizard->m_ends[e];
        m_groups[e]->showEnd(end, tr(titles[e]).replace(QLatin1String("%s"), end.fileName));
    }
}

bool CFaultFind2Page1::validatePage()
{
    QStringList messages;
    for (int e = 0; e < 2; ++e) {
        if (!CheckWindow(m_wizard->m_ends[e], m_groups[e]->start(), false, &messages)) {
            QMessageBox::warning(this, QString(), messages.value(0));
            return false;
        }
    }
    return true;
}
