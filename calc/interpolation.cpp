#include "interpolation.h"

double InterpLagrange1(double x0, double y0, double x1, double y1, double x)
{
    return ((x - x1) * y0 - (x - x0) * y1) / (x0 - x1);
}

double InterpLagrange2(double x0, double y0, double x1, double y1, double x2, double y2, double x)
{
    const double l0 = (x - x1) * (x - x2) / ((x0 - x1) * (x0 - x2));
    const double l1 = (x - x0) * (x - x2) / ((x1 - x0) * (x1 - x2));
    const double l2 = (x - x0) * (x - x1) / ((x2 - x0) * (x2 - x1));
    return l0 * y0 + l1 * y1 + l2 * y2;
}

double InterpNewton2(double x0, double y0, double x1, double y1, double x2, double y2, double x)
{
    const double d1 = (y1 - y0) / (x1 - x0);
    const double d2 = ((y2 - y1) / (x2 - x1) - d1) / (x2 - x0);
    return y0 + (x - x0) * d1 + (x - x1) * (x - x0) * d2;
}

double InterpHermite2(double x0, double y0, double x1, double y1, double x2, double y2, double x)
{
    const double u = x - x1;
    const double w = x - x0;
    const double v = x0 - x1;
    const double z = x1 - x0;
    const double r = u / v;
    const double s = w / z;
    const double m0 = (y1 - y0) / z;
    const double m1 = (y2 - y1) / (x2 - x1);
    const double r2 = r * r;
    const double s2 = s * s;
    return (2 * w / z + 1) * r2 * y0 + (2 * u / v + 1) * s2 * y1 + m0 * w * r2 + m1 * u * s2;
}

double Interpolate(int method, double x0, double y0, double x1, double y1, double x2, double y2, double x)
{
    switch (method) {
    case InterpHermite:
        return InterpHermite2(x0, y0, x1, y1, x2, y2, x);
    case InterpNewton:
        return InterpNewton2(x0, y0, x1, y1, x2, y2, x);
    case InterpLine:
        return InterpLagrange1(x0, y0, x1, y1, x);
    default:
        return InterpLagrange2(x0, y0, x1, y1, x2, y2, x);
    }
}
