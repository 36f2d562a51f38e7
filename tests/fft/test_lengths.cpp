#include "oscilla/fft/lengths.h"
#include "oscilla/spectrum/cfft.h"

#include <gtest/gtest.h>

using oscilla::CFFT;

namespace {
// An engine with no series: the length and kernel members only read primefac.
struct Engine {
    CFFT f{nullptr, 5, 0, 0, 0, 0.0, 0, 0.0, 0};
    int Find(int pf, int n)
    {
        f.SetPrimeFac(pf);
        return f.FindFFTlen(n);
    }
};
} // namespace

TEST(Lengths, TableHoldsTheDivisorsOf720720InOrder)
{
    const int *t = oscilla::PrimeFactorLengths();
    EXPECT_EQ(t[0], 1);
    EXPECT_EQ(t[oscilla::PFA_TABLE_SIZE - 1], 720720);
    int count = 0;
    for (int d = 1; d <= 720720; d++) {
        if (720720 % d == 0) {
            ASSERT_LT(count, oscilla::PFA_TABLE_SIZE);
            EXPECT_EQ(t[count], d);
            count++;
        }
    }
    EXPECT_EQ(count, 240);
}

TEST(Lengths, NextTableLengths)
{
    Engine e;
    EXPECT_EQ(e.f.npfa(1), 1);
    EXPECT_EQ(e.f.npfa(0), 1);
    EXPECT_EQ(e.f.npfa(17), 18);
    EXPECT_EQ(e.f.npfa(720720), 720720);
    EXPECT_EQ(e.f.npfa(720721), 720720); // stops at the last entry
    EXPECT_EQ(e.f.npfar(34), 36);
    EXPECT_EQ(e.f.npfar(1441440), 1441440);
    EXPECT_EQ(e.f.npfar(1441441), 1441440);
    EXPECT_EQ(e.f.OptPrimeFacCmplx(1000), 1001);
    EXPECT_EQ(e.f.OptPrimeFacReal(1000), 1008);
}

TEST(Lengths, PowersOfTwo)
{
    Engine e;
    EXPECT_EQ(e.f.NPowerof2(1), 2);
    EXPECT_EQ(e.f.NPowerof2(0), 2);
    EXPECT_EQ(e.f.NPowerof2(1024), 1024);
    EXPECT_EQ(e.f.NPowerof2(1025), 2048);
    EXPECT_EQ(e.f.Powerof2(1), 1);
    EXPECT_EQ(e.f.Powerof2(2), 1);
    EXPECT_EQ(e.f.Powerof2(3), 2);
    EXPECT_EQ(e.f.Powerof2(4), 2);
    EXPECT_EQ(e.f.Powerof2(5), 3);
}

TEST(Lengths, IsPow2LooksAtThePointCount)
{
    for (int n : {1, 2, 3, 64, 96}) {
        oscilla::XY rec[97] = {};
        rec[0].x = n;
        for (int i = 1; i <= n; i++)
            rec[i].x = i;
        CFFT f(rec, 5, 0, 0, 0, 0.0, 0, 0.0, 0);
        EXPECT_EQ(f.IsPow2(), (n == 2 || n == 64) ? 1 : 0) << n;
    }
}

TEST(Lengths, FindFFTlenUnderEveryPolicy)
{
    Engine e;
    const int want1000[8] = {1024, 1008, 1000, 1000, 1000, 1000, 1008, 1000};
    for (int pf = 0; pf < 8; pf++)
        EXPECT_EQ(e.Find(pf, 1000), want1000[pf]) << "primefac " << pf;
    EXPECT_EQ(e.Find(1, 17), 18);        // an odd request can come back even
    EXPECT_EQ(e.Find(6, 1024), 1024);    // a power of two stays
    EXPECT_EQ(e.Find(6, 17), 18);
    EXPECT_EQ(e.Find(6, 2000000), 1441440); // smaller than asked: nothing guards here
    EXPECT_EQ(e.Find(1, 2000001), 720720);
    EXPECT_EQ(e.Find(-3, 1000), 1000);
}

TEST(Lengths, KernelChoice)
{
    Engine e;
    EXPECT_EQ(e.f.BestFFT(1024), 0);
    EXPECT_EQ(e.f.BestFFT(1000), 2); // npfar(1000) = 1008, largest prime 5
    EXPECT_EQ(e.f.BestFFT(1001), 1); // 7 * 11 * 13
    EXPECT_EQ(e.f.BestFFT(1022), 2); // 2 * 7 * 73
    EXPECT_EQ(e.f.BestFFT(1031), 4); // a prime above 510
    EXPECT_EQ(e.f.BestFFT(509), 2);  // the threshold is strict: 509 still goes to mixed radix
    EXPECT_EQ(e.f.BestFFT(521), 4);
    EXPECT_EQ(e.f.BestFFT(2), 0);
    EXPECT_EQ(e.f.BestFFT(1), 1);
    EXPECT_EQ(e.f.BestFFT(36), 1);   // 36 = 2 * 18, and 18 divides 720720
    EXPECT_EQ(e.f.BestCmplxFFT(36), 1);
    EXPECT_EQ(e.f.BestFFT(1008), 1);
    EXPECT_EQ(e.f.BestCmplxFFT(1008), 1);
    EXPECT_EQ(e.f.BestCmplxFFT(1000), 2);
    EXPECT_EQ(e.f.BestCmplxFFT(1001), 1);
    EXPECT_EQ(e.f.BestCmplxFFT(2 * 1031), 4);
}

TEST(Lengths, PrimeFactorisation)
{
    int primes[50], powers[50];
    ASSERT_EQ(oscilla::PrimeFactors(16 * 9 * 25, primes, powers), 3);
    EXPECT_EQ(primes[1], 2);
    EXPECT_EQ(powers[1], 4);
    EXPECT_EQ(primes[2], 3);
    EXPECT_EQ(powers[2], 2);
    EXPECT_EQ(primes[3], 5);
    EXPECT_EQ(powers[3], 2);
    ASSERT_EQ(oscilla::PrimeFactors(2 * 65537, primes, powers), 2);
    EXPECT_EQ(primes[2], 65537);
    EXPECT_EQ(oscilla::PrimeFactors(1, primes, powers), 0);
    EXPECT_EQ(oscilla::LargestPrimeFactor(1), 0);
    EXPECT_EQ(oscilla::LargestPrimeFactor(0), 0);
    EXPECT_EQ(oscilla::LargestPrimeFactor(720720), 13);
    EXPECT_EQ(oscilla::LargestPrimeFactor(1022), 73);
    EXPECT_EQ(oscilla::LargestPrimeFactor(509), 509);
    // Every n up to 5000: the product of the factors gives n back, and each is prime.
    for (int n = 2; n <= 5000; n++) {
        const int c = oscilla::PrimeFactors(n, primes, powers);
        long long prod = 1;
        for (int i = 1; i <= c; i++) {
            for (int d = 2; d * d <= primes[i]; d++) {
                ASSERT_NE(primes[i] % d, 0) << n;
            }
            for (int k = 0; k < powers[i]; k++)
                prod *= primes[i];
            if (i > 1) {
                ASSERT_GT(primes[i], primes[i - 1]);
            }
        }
        ASSERT_EQ(prod, n);
    }
}
