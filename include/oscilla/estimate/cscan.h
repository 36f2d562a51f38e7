// CScan: local extrema and zero crossings of a series, refinement of an
// extremum between samples, area and first-moment sums, and the peak lists
// built from them.
#ifndef OSCILLA_ESTIMATE_CSCAN_H
#define OSCILLA_ESTIMATE_CSCAN_H

#include "oscilla/series/xy.h"

namespace oscilla {

// What the `refine` argument of the limited peak lists selects.
enum PeakRefineMethod { PEAK_SAMPLE = 0, PEAK_POLYNOMIAL = 1, PEAK_SPLINE = 2 };
enum PeakWeightColumn { PEAK_W_INDEX = 0, PEAK_W_WIDTH = 1 };

struct PeakRefineMode {
    int code;                 // lowest refine value of this row
    PeakRefineMethod method;  // how x, y of a peak are found
    PeakWeightColumn wcolumn; // what the w column of a peak holds
    const char *name;
};

// Rows ascending by code; every code at or above the last row's takes that row,
// and negative codes refine like 1.
extern const PeakRefineMode PEAK_REFINE_MODES[];
extern const int PEAK_REFINE_MODE_COUNT;
const PeakRefineMode &FindPeakRefineMode(int refine);

class CScan {
public:
    double *listX;  // x of the entries found, zero-based
    double *listY;  // y of the entries found
    int *listIdx;   // one-based point index of each entry
    int *listSgn;   // extrema: 1 maximum, 0 minimum; crossings: 1 fall, 0 rise
    int count;      // entries found by the last extrema scan
    double minX, maxX, minY, maxY;
    int minIdx, maxIdx;
    int splineCount;  // points of the series the spline was built on
    XY *splineSeries; // that series, not owned
    double *splineY2; // second derivatives, one-based, owned

    CScan();
    ~CScan();
    // A copy is a plain copy of the fields: both objects then share the lists
    // and the spline, and only one of them may be destroyed.
    CScan(const CScan &) = default;
    CScan &operator=(const CScan &) = default;

    int Allocate(int n);

    double *GetX() const { return listX; }
    double *GetY() const { return listY; }
    int *GetIdx() const { return listIdx; }
    int *GetSgn() const { return listSgn; }
    int GetCnt() const { return count; }
    void GetMin(double &x, double &y, int &idx) const
    {
        x = minX;
        y = minY;
        idx = minIdx;
    }
    void GetMax(double &x, double &y, int &idx) const
    {
        x = maxX;
        y = maxY;
        idx = maxIdx;
    }

    // Extrema scans: the number of entries, 0 when the lists can't be allocated.
    int Extrema(XY *xy);
    int Maxima(XY *xy);
    int Minima(XY *xy);
    int MaximaAbs(XY *xy);
    // Maxima of y clipped below at 0 (minima of y clipped above at 0); -1 when
    // the save buffer can't be allocated. The last point is left as it is.
    int MaximaGTZero(XY *xy);
    int MinimaLTZero(XY *xy);

    // Zero crossings: they fill the lists but leave count and the min/max fields.
    int Zero(XY *xy);
    int ZeroIncr(XY *xy);
    int ZeroDecr(XY *xy);

    double Area(XY *xy);
    double AreaAbs(XY *xy);
    void Moments(XY *xy, int from, int to, double &area, double &centroid);
    XY *MovingMoment(XY *xy, int useCentroid, int halfWidth);

    // Neville interpolation on one-based arrays. The mean and the clamp range
    // always come from ya[1..4], so ya must hold at least four values.
    double polint(double *xa, double *ya, int n, double x, int limit);

    // Position and value of the extremum at point idx (minimum 0: a maximum)
    // between its neighbours; 1 on convergence. With useSpline the spline
    // coefficients are built first if they belong to another series. At
    // idx = n - 1 the four-point stencil is kept inside the series.
    int RefineCtr(XY *xy, int idx, double &y, double &x, int minimum, double tol, int useSpline);
    void SplineCoef(XY *xy);
    double SplineEval(double x);
    int BisecXY(XY *xy, double x);

    // Peak records belong to the caller. A maxCount of 0 or less cuts nothing.
    XY *GetMaxima(XY *xy, int mode);
    XY *GetMimina(XY *xy, int mode);
    XY *GetLmtdMaxima(XY *xy, int minWidth, int refine, int maxCount);
    XY *GetLmtdMaximaYThreshold(XY *xy, double threshold, int minWidth, int refine, int maxCount);
    XY *GetLmtdMaximaReference(XY *xy, int minWidth, int refine, int maxCount, double minSeparation);
    XY *GetLmtdMaximaReference(XY *xy, double threshold, int minWidth, int refine, int maxCount,
                               double minSeparation);
    XY *GetExtrema(XY *xy, int minPoints, int maxPoints, int addEnds);

private:
    enum ScanKind { SCAN_BOTH, SCAN_MAXIMA, SCAN_MINIMA };
    int ScanExtrema(XY *xy, ScanKind kind, bool absolute);
    int ScanZero(XY *xy, int keepFalls, int keepRises);
    int ClippedScan(XY *xy, bool maxima);
    XY *ExtremumList(XY *xy, int mode, bool minimum);
    XY *StartPeakList(XY *xy, int minWidth, int refine, int &c, double &D, const PeakRefineMode *&mode);
    XY *ReferencePeaks(XY *xy, bool useThreshold, double threshold, int minWidth, int refine, int maxCount,
                       double minSeparation);
};

} // namespace oscilla

#endif
