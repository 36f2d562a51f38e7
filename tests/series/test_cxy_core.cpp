#include "oscilla/series/cxy.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <vector>

using oscilla::CXY;
using oscilla::XY;

static_assert(sizeof(XY) == 32, "XY element size is a host contract");
static_assert(offsetof(XY, w) == 16 && offsetof(XY, flag) == 24 && offsetof(XY, reps) == 25, "XY offsets");
static_assert(sizeof(oscilla::XYZ) == 40 && offsetof(oscilla::XYZ, flag) == 32, "XYZ layout");

namespace {

// A calloc'ed record of n points, x = i, y = 10 i, with the given flags.
XY *MakeRecord(int n, const std::vector<int> &flags = {})
{
    XY *r = static_cast<XY *>(std::calloc(n + 1, sizeof(XY)));
    r[0].x = n;
    for (int i = 1; i <= n; i++) {
        r[i].x = i;
        r[i].y = 10.0 * i;
        if (i - 1 < static_cast<int>(flags.size()))
            r[i].flag = static_cast<signed char>(flags[i - 1]);
    }
    return r;
}

} // namespace

TEST(CXYCore, NullRecordOwnsAndFreesNothing)
{
    CXY c(nullptr);
    EXPECT_EQ(c.Getpxy(), nullptr);
    EXPECT_EQ(c.FirstActive(), 0);
    EXPECT_EQ(c.LastActive(), 0);
    EXPECT_EQ(c.GetCnt(), 0);
    EXPECT_EQ(c.Claim(), nullptr);
    CXY d; // the default construction is the null one
    EXPECT_EQ(d.GetCnt(), 0);
}

TEST(CXYCore, ArraysConstructorBuildsAZeroedOwnedRecord)
{
    double x[3] = {0.5, 1.5, 2.5}, y[3] = {4, 5, 6};
    CXY c(3, x, y);
    XY *r = c.Getpxy();
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r[0].x, 3.0);
    EXPECT_EQ(r[3].x, 2.5);
    EXPECT_EQ(r[2].y, 5.0);
    EXPECT_EQ(r[2].w, 0.0);
    EXPECT_EQ(r[2].flag, 0);
    EXPECT_EQ(c.owned, 1);
    EXPECT_EQ(c.FirstActive(), 1);
    EXPECT_EQ(c.LastActive(), 3);
}

TEST(CXYCore, ActiveRangeSpansFirstToLastActivePoint)
{
    XY *r = MakeRecord(6, {42, 0, 42, 32, 43, 42});
    CXY c(r);
    EXPECT_EQ(c.FirstActive(), 2); // inner inactive point 3 does not narrow the range
    EXPECT_EQ(c.LastActive(), 4);  // 43 passes the mask test: inactive here
    std::free(r);
}

TEST(CXYCore, AllInactiveOrOneActivePointReportsTheWholeLength)
{
    XY *r = MakeRecord(5, {42, 42, 42, 42, 42});
    {
        CXY c(r);
        EXPECT_EQ(c.FirstActive(), 1);
        EXPECT_EQ(c.LastActive(), 5);
    }
    r[3].flag = 0; // exactly one active point: last == first triggers the reset
    {
        CXY c(r);
        EXPECT_EQ(c.FirstActive(), 1);
        EXPECT_EQ(c.LastActive(), 5);
    }
    std::free(r);
}

TEST(CXYCore, ActiveRangeOfAnotherRecordTakesItsCountButOurFlags)
{
    XY *own = MakeRecord(4, {42, 0, 0, 0});
    XY *other = MakeRecord(3); // all active, but its flags are not the ones read
    CXY c(own);
    int f = 0, l = 0;
    c.GetActiveRange(other, f, l);
    EXPECT_EQ(f, 2);
    EXPECT_EQ(l, 3);
    std::free(own);
    std::free(other);
}

TEST(CXYCore, CopyOntoShorterRecordCarriesTheSourceCount)
{
    XY *src = MakeRecord(10);
    XY *dst = static_cast<XY *>(std::calloc(6, sizeof(XY))); // 4 points + header + a guard cell
    dst[0].x = 4;
    dst[5].y = -777.0;
    EXPECT_EQ(CXY::CopyXY(dst, src), dst);
    EXPECT_EQ(dst[0].x, 10.0); // the header came along
    EXPECT_EQ(dst[4].y, 40.0);
    EXPECT_EQ(dst[5].y, -777.0); // five elements copied, not six
    std::free(dst);

    XY *dup = CXY::DupXY(src);
    ASSERT_NE(dup, nullptr);
    EXPECT_EQ(dup[0].x, 10.0);
    EXPECT_EQ(dup[10].y, 100.0);
    std::free(dup);
    std::free(src);
}

TEST(CXYCore, DupReplacesAndClaimHandsOver)
{
    XY *r = MakeRecord(3);
    CXY c(r);
    XY *a = c.Dup();
    ASSERT_NE(a, nullptr);
    XY *b = c.Dup(); // the first copy is released here
    EXPECT_EQ(c.GetXYp(), b);
    XY *mine = c.Claim();
    EXPECT_EQ(mine, b);
    EXPECT_EQ(c.Claim(), nullptr);
    std::free(mine);
    std::free(r);
}

TEST(CXYCore, ActivePacksACopy)
{
    XY *r = MakeRecord(5, {0, 42, 0, 43, 0});
    CXY c(r);
    XY *p = c.Active(0, 0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[0].x, 3.0);
    EXPECT_EQ(p[1].x, 1.0);
    EXPECT_EQ(p[2].x, 3.0);
    EXPECT_EQ(p[3].x, 5.0);
    EXPECT_EQ(r[0].x, 5.0); // the host's record is untouched
    std::free(r);
}

TEST(CXYCore, ActiveKeepsTheEndsWhenNothingIsActive)
{
    XY *r = MakeRecord(4, {42, 42, 42, 42});
    CXY c(r);
    XY *p = c.Active(0, 1);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[0].x, 0.0); // the count stays as packing left it
    EXPECT_EQ(p[1].x, 1.0);
    EXPECT_EQ(p[2].x, 4.0);
    EXPECT_EQ(p[2].flag, 42); // copied whatever their flags
    std::free(r);
}

TEST(CXYCore, ActiveInPlaceRepacksTheRecordItself)
{
    XY *r = MakeRecord(4, {0, 42, 0, 0});
    CXY c(r);
    XY *p = c.Active(1, 0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(c.Getpxy(), p);
    EXPECT_EQ(p[0].x, 3.0);
    EXPECT_EQ(p[2].x, 3.0);
    EXPECT_EQ(c.GetCnt(), 4); // not recomputed
    std::free(p);
}

TEST(CXYCore, ActiveBoundsKeepsInnerInactiveFlags)
{
    XY *r = MakeRecord(6, {42, 0, 42, 0, 0, 42});
    r[0].w = 1.0;
    CXY c(r);
    XY *p = c.ActiveBounds(1);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[0].x, 4.0);
    EXPECT_EQ(p[0].w, 1.0); // header copied from the series
    EXPECT_EQ(p[1].x, 2.0);
    EXPECT_EQ(p[2].flag, 42);
    EXPECT_EQ(p[4].x, 5.0);
    std::free(r);
}
