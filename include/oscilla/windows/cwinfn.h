// CWinFn: window functions of uniformly spaced data.
#ifndef OSCILLA_WINDOWS_CWINFN_H
#define OSCILLA_WINDOWS_CWINFN_H

namespace oscilla {

class CWinFn {
public:
    double *w;
    int n;

    CWinFn();
    // Builds window `window` over n points, multiplies data[first..first+n-1]
    // by it, and stores the power gain in gains[0] and n / sum of the window in gains[1].
    CWinFn(double *data, int first, int window, int n, double shape, double *gains);
    ~CWinFn();
    CWinFn(const CWinFn &) = delete;
    CWinFn &operator=(const CWinFn &) = delete;

    int WindowData(double *data, int first, int window, int n, double shape, double *gains);
};

} // namespace oscilla

#endif
