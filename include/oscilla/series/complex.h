// Complex value type, real helpers and the zero-filled vector and matrix allocators.
#ifndef OSCILLA_SERIES_COMPLEX_H
#define OSCILLA_SERIES_COMPLEX_H

namespace oscilla {

// Two doubles, real part first, and nothing else: an array of complex is an
// array of interleaved doubles, which the transforms rely on.
class complex {
public:
    double re;
    double im;

    complex() : re(0.0), im(0.0) {}
    complex(double r, double i) : re(r), im(i) {}

    complex &operator+=(const complex &z) { re += z.re; im += z.im; return *this; }
    complex &operator-=(const complex &z) { re -= z.re; im -= z.im; return *this; }
    complex &operator+=(double d) { re += d; return *this; }
    complex &operator-=(double d) { re -= d; return *this; }
    complex &operator*=(double d) { re *= d; im *= d; return *this; }
    complex &operator/=(double d) { re /= d; im /= d; return *this; }
    complex &operator*=(const complex &z);
    complex &operator/=(const complex &z);
};

extern const complex complex_zero;

double real(const complex &z);
double imag(const complex &z);
complex conj(const complex &z);
double norm(const complex &z);
double abs(const complex &z);
double arg(const complex &z);
complex polar(double r, double t);

complex operator+(const complex &z);
complex operator-(const complex &z);
complex operator+(const complex &a, const complex &b);
complex operator+(const complex &a, double b);
complex operator+(double a, const complex &b);
complex operator-(const complex &a, const complex &b);
complex operator-(const complex &a, double b);
complex operator-(double a, const complex &b);
complex operator*(const complex &a, const complex &b);
complex operator*(const complex &a, double b);
complex operator*(double a, const complex &b);
complex operator/(const complex &a, const complex &b);
complex operator/(double a, const complex &b);
complex operator/(const complex &a, double b);
int operator==(const complex &a, const complex &b);
int operator!=(const complex &a, const complex &b);

complex exp(const complex &z);
complex log(const complex &z);
complex log10(const complex &z);
complex sqrt(const complex &z);
complex pow(const complex &z, double p);
complex pow(double a, const complex &w);
complex pow(const complex &z, const complex &w);
complex sin(const complex &z);
complex cos(const complex &z);
complex sinh(const complex &z);
complex cosh(const complex &z);
complex tan(const complex &z);
complex tanh(const complex &z);
complex acos(const complex &z);
complex asin(const complex &z);
complex atan(const complex &z);

double fraction(double v);
double integer(double v);

// n doubles, zero-filled; null when memory is short.
double *lvec(int n);
void lvecfree(double *v);

// Row-pointer matrices. The returned pointer addresses the first row pointer;
// the row and column counts stand as two 32-bit words directly in front of it.
double **lmatr(int rows, int cols);
void lmatrfree(double **m);
void lmatrdims(double **m, int &rows, int &cols);
int **imatr(int rows, int cols);
void imatrfree(int **m);
void imatrdims(int **m, int &rows, int &cols);

} // namespace oscilla

#endif
