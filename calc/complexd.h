#pragma once

// A phasor in peak units of its channel: a full-scale sine of amplitude A has modulus A.
struct ComplexD
{
    double re = 0.0;
    double im = 0.0;

    ComplexD &multiply(const ComplexD &b)
    {
        const double r = re * b.re - im * b.im;
        const double i = im * b.re + re * b.im;
        re = r;
        im = i;
        return *this;
    }

    // Multiplies by the conjugate of b and divides by b times its conjugate. A zero divisor
    // gives infinities and not-a-numbers, as IEEE arithmetic does.
    ComplexD &divide(const ComplexD &b)
    {
        multiply(ComplexD{b.re, -b.im});
        const double norm = b.re * b.re - b.im * -b.im;
        re /= norm;
        im /= norm;
        return *this;
    }

    ComplexD operator+(const ComplexD &b) const { return ComplexD{re + b.re, im + b.im}; }
    ComplexD operator*(const ComplexD &b) const { return ComplexD(*this).multiply(b); }
    ComplexD scaled(double f) const { return ComplexD{re * f, im * f}; }
};
