#include "oscilla/series/complex.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

namespace oscilla {

static_assert(sizeof(complex) == 2 * sizeof(double), "complex must be two doubles");
static_assert(std::is_standard_layout<complex>::value, "complex must be standard layout");
static_assert(offsetof(complex, re) == 0 && offsetof(complex, im) == sizeof(double),
              "real part first, imaginary part second");

const complex complex_zero(0.0, 0.0);

complex &complex::operator*=(const complex &z)
{
    double r = re * z.re - im * z.im;
    im = im * z.re + re * z.im;
    re = r;
    return *this;
}

complex &complex::operator/=(const complex &z)
{
    double n = z.re * z.re + z.im * z.im;
    double r = re * z.re + im * z.im;
    im = im * z.re - re * z.im;
    re = r / n;
    im /= n;
    return *this;
}

double real(const complex &z) { return z.re; }
double imag(const complex &z) { return z.im; }
complex conj(const complex &z) { return complex(z.re, -z.im); }
double norm(const complex &z) { return z.re * z.re + z.im * z.im; }
double abs(const complex &z) { return std::sqrt(z.re * z.re + z.im * z.im); }

double arg(const complex &z)
{
    if (z.re == 0.0 && z.im == 0.0)
        return 0.0;
    return std::atan2(z.im, z.re);
}

complex polar(double r, double t) { return complex(r * std::cos(t), r * std::sin(t)); }

complex operator+(const complex &z) { return z; }
complex operator-(const complex &z) { return complex(-z.re, -z.im); }
complex operator+(const complex &a, const complex &b) { return complex(a.re + b.re, a.im + b.im); }
complex operator+(const complex &a, double b) { return complex(a.re + b, a.im); }
complex operator+(double a, const complex &b) { return complex(a + b.re, b.im); }
complex operator-(const complex &a, const complex &b) { return complex(a.re - b.re, a.im - b.im); }
complex operator-(const complex &a, double b) { return complex(a.re - b, a.im); }
complex operator-(double a, const complex &b) { return complex(a - b.re, -b.im); }
complex operator*(const complex &a, const complex &b)
{
    return complex(a.re * b.re - a.im * b.im, a.im * b.re + a.re * b.im);
}
complex operator*(const complex &a, double b) { return complex(a.re * b, a.im * b); }
complex operator*(double a, const complex &b) { return complex(a * b.re, a * b.im); }

// Numerator times the conjugate of the divisor, over the divisor's norm. A zero
// divisor yields whatever non-finite values that gives.
complex operator/(const complex &a, const complex &b)
{
    double n = norm(b);
    return complex((a.re * b.re + a.im * b.im) / n, (a.im * b.re - a.re * b.im) / n);
}
complex operator/(double a, const complex &b)
{
    double n = norm(b);
    return complex(a * b.re / n, -a * b.im / n);
}
complex operator/(const complex &a, double b) { return complex(a.re / b, a.im / b); }
int operator==(const complex &a, const complex &b) { return (a.re == b.re && a.im == b.im) ? 1 : 0; }
int operator!=(const complex &a, const complex &b) { return (a.re != b.re || a.im != b.im) ? 1 : 0; }

// The elementary functions keep their exponential forms: the values at the
// edges (overflowing exp, exact zeros) follow from these forms on purpose.
complex exp(const complex &z) { return polar(std::exp(z.re), z.im); }
complex log(const complex &z) { return complex(std::log(abs(z)), arg(z)); }
complex log10(const complex &z) { return log(z) * 0.4342944819032518; }
complex sqrt(const complex &z) { return polar(std::sqrt(abs(z)), arg(z) / 2.0); }

complex pow(const complex &z, double p)
{
    if (z == complex_zero && p > 0.0)
        return complex_zero;
    return polar(std::pow(abs(z), p), arg(z) * p);
}

complex pow(double a, const complex &w)
{
    if (a == 0.0 && w.re > 0.0)
        return complex_zero;
    if (a > 0.0)
        return exp(w * std::log(a));
    return exp(w * complex(std::log(std::fabs(a)), 3.14159265358979323846));
}

complex pow(const complex &z, const complex &w)
{
    if (z == complex_zero && w.re > 0.0)
        return complex_zero;
    return exp(w * log(z));
}

complex sin(const complex &z)
{
    double e = std::exp(z.im);
    return complex(std::sin(z.re) * (1.0 / e + e) / 2.0, std::cos(z.re) * (1.0 / e - e) * (-0.5));
}

complex cos(const complex &z)
{
    double e = std::exp(z.im);
    return complex(std::cos(z.re) * (1.0 / e + e) / 2.0, std::sin(z.re) * (1.0 / e - e) / 2.0);
}

complex sinh(const complex &z)
{
    double e = std::exp(z.re);
    return complex(std::cos(z.im) * (e - 1.0 / e) / 2.0, std::sin(z.im) * (e + 1.0 / e) / 2.0);
}

complex cosh(const complex &z)
{
    double e = std::exp(z.re);
    return complex(std::cos(z.im) * (e + 1.0 / e) / 2.0, std::sin(z.im) * (e - 1.0 / e) / 2.0);
}

complex tan(const complex &z)
{
    double e = std::exp(z.im);
    double d = 1.0 / e - e, s = 1.0 / e + e;
    double sx = std::sin(z.re), cx = std::cos(z.re);
    double den = (cx * s) * (cx * s) + (sx * d) * (sx * d);
    return complex(4.0 * sx * cx, -d * s) / den;
}

complex tanh(const complex &z)
{
    double e = std::exp(z.re);
    double p = e + 1.0 / e, m = e - 1.0 / e;
    double sy = std::sin(z.im), cy = std::cos(z.im);
    double den = (cy * p) * (cy * p) + (sy * m) * (sy * m);
    return complex(m * p, 4.0 * sy * cy) / den;
}

complex acos(const complex &z)
{
    double x = z.re, y = z.im;
    complex w((1.0 - x * x + y * y), -2.0 * x * y);
    double h = arg(w) / 2.0, r = std::sqrt(abs(w));
    complex u(x - r * std::sin(h), y + r * std::cos(h));
    return complex(arg(u), -std::log(abs(u)));
}

complex asin(const complex &z)
{
    double x = z.re, y = z.im;
    complex w((1.0 - x * x + y * y), -2.0 * x * y);
    double h = arg(w) / 2.0, r = std::sqrt(abs(w));
    complex u(r * std::cos(h) - y, r * std::sin(h) + x);
    return complex(arg(u), -std::log(abs(u)));
}

complex atan(const complex &z)
{
    double x = z.re, y = z.im;
    double D = (1.0 + y) * (1.0 + y) + x * x;
    complex w(((1.0 - y) * (1.0 + y) - x * x) / D, 2.0 * x / D);
    return complex(arg(w) / 2.0, -std::log(abs(w)) / 2.0);
}

double fraction(double v)
{
    double ip;
    return std::modf(v, &ip);
}

double integer(double v)
{
    double ip;
    std::modf(v, &ip);
    return ip;
}

double *lvec(int n)
{
    if (n < 0)
        return nullptr;
    return static_cast<double *>(std::calloc(n > 0 ? static_cast<size_t>(n) : 1, sizeof(double)));
}

void lvecfree(double *v) { std::free(v); }

namespace {

// One block: a pointer-sized slot holding the two 32-bit dimension words,
// then the row pointers. The caller sees the address of the first row pointer.
template <class T>
T **matrix_alloc(int rows, int cols)
{
    if (rows < 0 || cols < 0)
        return nullptr;
    void *block = std::malloc(sizeof(T *) * (static_cast<size_t>(rows) + 1));
    if (!block)
        return nullptr;
    T **m = static_cast<T **>(block) + 1;
    std::int32_t *dims = reinterpret_cast<std::int32_t *>(m) - 2;
    dims[0] = rows;
    dims[1] = cols;
    for (int i = 0; i < rows; i++)
        m[i] = static_cast<T *>(std::malloc(sizeof(T) * (cols > 0 ? static_cast<size_t>(cols) : 1)));
    // Only the last row is tested. With no rows the word in front of the row
    // pointers is the column count, so an empty matrix with columns succeeds.
    bool ok = rows > 0 ? m[rows - 1] != nullptr : cols != 0;
    if (ok)
        return m;
    for (int i = 0; i < rows; i++)
        std::free(m[i]);
    std::free(block);
    return nullptr;
}

template <class T>
void matrix_free(T **m)
{
    const std::int32_t *dims = reinterpret_cast<const std::int32_t *>(m) - 2;
    for (int i = 0; i < dims[0]; i++)
        std::free(m[i]);
    std::free(m - 1);
}

template <class T>
void matrix_dims(T **m, int &rows, int &cols)
{
    const std::int32_t *dims = reinterpret_cast<const std::int32_t *>(m) - 2;
    rows = dims[0];
    cols = dims[1];
}

} // namespace

double **lmatr(int rows, int cols) { return matrix_alloc<double>(rows, cols); }
void lmatrfree(double **m) { matrix_free(m); }
void lmatrdims(double **m, int &rows, int &cols) { matrix_dims(m, rows, cols); }
int **imatr(int rows, int cols) { return matrix_alloc<int>(rows, cols); }
void imatrfree(int **m) { matrix_free(m); }
void imatrdims(int **m, int &rows, int &cols) { matrix_dims(m, rows, cols); }

} // namespace oscilla
