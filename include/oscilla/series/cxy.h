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
    int ClearInactive(XY *xy);
    XY *ActiveDiscrete();
    // OPS-END
};

} // namespace oscilla

#endif
