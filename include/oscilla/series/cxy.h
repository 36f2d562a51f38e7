// CXY: a small container around one XY record.
#ifndef OSCILLA_SERIES_CXY_H
#define OSCILLA_SERIES_CXY_H

#include "oscilla/series/xy.h"

namespace oscilla {

class CXY {
public:
    XY *pxy;             // the series worked on
    XY *xyp;             // last result record, owned until Claim
    unsigned char *incl; // flags saved by SaveIncl, owned
    int first;           // first active index
    int last;            // last active index
    int cnt;             // number of points at construction
    int owned;           // 1 if pxy was allocated here
    int inclcnt;         // number of flags held in incl

    CXY(XY *xy = nullptr);
    CXY(int n, double *x, double *y);
    ~CXY();

    XY *Getpxy() const { return pxy; }
    XY *GetXYp() const { return xyp; }
    int FirstActive() const { return first; }
    int LastActive() const { return last; }
    int GetCnt() const { return cnt; }

    static XY *CopyXY(XY *dst, XY *src);
    static XY *DupXY(XY *src);
    XY *Dup();
    XY *Claim();
    XY *Active(int inplace, int keepends);
    XY *ActiveBounds(int);
    void GetActiveRange(XY *xy, int &first, int &last);

    // Series operations (sorting, selection, averaging, statistics, text dumps).
    // OPS-BEGIN
    // Order and search. The sorts move whole points in place (unstable).
    static void SortIncX(XY *xy);
    static void SortDecX(XY *xy);
    static void SortIncY(XY *xy);
    static void SortDecY(XY *xy);
    static void SortIncW(XY *xy);
    static void SortDecW(XY *xy);
    static void xaqsr(int lo, int hi, XY *xy);
    static void xdqsr(int lo, int hi, XY *xy);
    static void yaqsr(int lo, int hi, XY *xy);
    static void ydqsr(int lo, int hi, XY *xy);
    static void waqsr(int lo, int hi, XY *xy);
    static void wdqsr(int lo, int hi, XY *xy);
    static int BisecX(XY *xy, double v);
    static int BisecY(XY *xy, double v);
    static int LargestXDelta(XY *xy);
    static void ReverseXY(XY *xy);
    static void ReverseYW(XY *xy);

    // Selection. Segment(int, int) builds into xyp; the others return a
    // record the caller frees, or work in place where the copy flag says so.
    static XY *Segment(XY *xy, double lo, double hi);
    XY *Segment(int index, int len);
    static XY *LimitByDecY(XY *xy, int maxn, int copy);
    static XY *LimitByIncY(XY *xy, int maxn, int copy);
    static XY *LimitByDecW(XY *xy, int maxn, int copy);
    static XY *LimitByIncW(XY *xy, int maxn, int copy);
    static XY *RemoveAdjacent(XY *xy, double dist);
    static XY *AvgReplicates(XY *xy, int clear, int keepfour);
    XY *AvgReplSD(XY *xy, int clear, int &nrepl, int &nremoved, int &nsingle);
    static XY *SumExtRef(XY **list);
    static XY *FnData(double (*fn)(double), double lo, double hi, int n);
    static XY *ScaleY(XY *xy, double f);

    // Activity.
    int ClearInactive(XY *xy);
    static int IsInactive(XY *xy);
    static int IsReplicate(XY *xy);
    int AssureActive(XY *xy, int need);
    void SaveIncl(XY *xy);
    void RestoreIncl(XY *xy);
    void CopyIncl(XY *dst, XY *src);
    XY *ActiveDiscrete();

    // Statistics and measures.
    double XSpacing(XY *xy);
    static int IsUniformX(XY *xy, double tol);
    double Area(XY *xy);
    double Power(XY *xy);
    static void XYStats(XY *xy, XYSTATS *stats, int stride);
    double SSM(XY *xy);
    double ComputeSSM(XY *xy, int useweights);
    double SSE(XY *a, XY *b);
    double SSE(XY *xy, double (*fn)(double));
    static void Std(int n, double sum, double sum2, double &mean, double &sd);
    static void IVar(int n, double sum, double sum2, double &mean, double &ivar);
    static double polint(double *xa, double *ya, int n, double x, int clamp);
    double UniNoise(XY *xy);
    double GaussNoise(XY *xy);

    // Text dumps.
    int ASCIIFile(XY *xy, const char *path);
    static int ToFile(XY *xy, const char *path);
    // OPS-END
};

} // namespace oscilla

#endif
