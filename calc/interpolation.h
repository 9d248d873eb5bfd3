#pragma once

// Three-point interpolations over (x0, y0), (x1, y1), (x2, y2) at the abscissa x: the time
// shift of a curve resamples it with one of them, and the DFT-insert frequency resamples its
// two cycles with the Hermite segment. Abscissas are sample times in microseconds.

// Numbers by which a script chooses the method.
enum InterpMethod
{
    InterpHermite = 0,
    InterpLagrangeParabola = 1,
    InterpNewton = 2,
    InterpLine = 3
};

// The straight line through the first two points.
double InterpLagrange1(double x0, double y0, double x1, double y1, double x);
// The parabola through the three points, in Lagrange form.
double InterpLagrange2(double x0, double y0, double x1, double y1, double x2, double y2, double x);
// The same parabola by divided differences.
double InterpNewton2(double x0, double y0, double x1, double y1, double x2, double y2, double x);
// A cubic Hermite segment on x0..x1 whose slopes are the two chords.
double InterpHermite2(double x0, double y0, double x1, double y1, double x2, double y2, double x);
// By number: 0 Hermite, 2 Newton, 3 line, any other the Lagrange parabola.
double Interpolate(int method, double x0, double y0, double x1, double y1, double x2, double y2, double x);
