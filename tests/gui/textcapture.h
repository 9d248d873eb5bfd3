#pragma once

// A paint device that keeps the texts a view draws, with where and in which pen, so that a
// test can assert what an engineer reads on the screen without reading private members.
// Everything else that is painted is dropped.

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QString>
#include <QTransform>
#include <QVector>

#include <climits>

#include <memory>

struct CapturedText
{
    QString text;
    QPointF origin; // the baseline's start, in device pixels
    QRgb pen = 0;
};

class TextCaptureEngine : public QPaintEngine
{
public:
    TextCaptureEngine() : QPaintEngine(QPaintEngine::PaintEngineFeatures()) {}

    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    Type type() const override { return QPaintEngine::User; }
    void updateState(const QPaintEngineState &state) override
    {
        if (state.state() & QPaintEngine::DirtyTransform)
            m_transform = state.transform();
        if (state.state() & QPaintEngine::DirtyPen)
            m_pen = state.pen().color().rgba();
    }
    void drawTextItem(const QPointF &p, const QTextItem &item) override
    {
        texts.push_back(CapturedText{item.text(), m_transform.map(p), m_pen});
    }
    void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override {}
    void drawImage(const QRectF &, const QImage &, const QRectF &, Qt::ImageConversionFlags) override {}
    void drawTiledPixmap(const QRectF &, const QPixmap &, const QPointF &) override {}
    void drawPath(const QPainterPath &) override {}
    void drawPolygon(const QPointF *, int, PolygonDrawMode) override {}
    void drawPolygon(const QPoint *, int, PolygonDrawMode) override {}
    void drawLines(const QLineF *, int) override {}
    void drawLines(const QLine *, int) override {}
    void drawRects(const QRectF *, int) override {}
    void drawRects(const QRect *, int) override {}
    void drawPoints(const QPointF *, int) override {}
    void drawPoints(const QPoint *, int) override {}
    void drawEllipse(const QRectF &) override {}

    QVector<CapturedText> texts;

private:
    QTransform m_transform;
    QRgb m_pen = 0;
};

class TextCaptureDevice : public QPaintDevice
{
public:
    TextCaptureDevice(int width, int height) : m_width(width), m_height(height) {}
    QPaintEngine *paintEngine() const override { return &m_engine; }
    const QVector<CapturedText> &texts() const { return m_engine.texts; }
    // The first text that starts with `head`, or null.
    const CapturedText *find(const QString &head) const
    {
        for (const CapturedText &t : m_engine.texts)
            if (t.text.startsWith(head))
                return &t;
        return nullptr;
    }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return m_width;
        case PdmHeight:
            return m_height;
        case PdmWidthMM:
            return m_width * 254 / 960;
        case PdmHeightMM:
            return m_height * 254 / 960;
        case PdmNumColors:
            return INT_MAX;
        case PdmDepth:
            return 32;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return int(QPaintDevice::devicePixelRatioFScale());
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    int m_width;
    int m_height;
    mutable TextCaptureEngine m_engine;
};
