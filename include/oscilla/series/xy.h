// Series records shared by the host and the library.
#ifndef OSCILLA_SERIES_XY_H
#define OSCILLA_SERIES_XY_H

namespace oscilla {

// One 32-byte element. Element 0 is the header (x = point count), points run 1..N.
struct XY {
    double x;
    double y;
    double w;
    signed char flag;
    unsigned char reps;
    unsigned char unused[6];
};

// One 40-byte element of a time-frequency grid.
struct XYZ {
    double x;
    double y;
    double z;
    double w;
    unsigned char flag;
    unsigned char unused[7];
};

struct XYSTATS {
    int n;
    double xmean;
    double xsd;
    double ymean;
    double ysd;
    double sumw;
    double sumwy;
    double sumwy2;
    double sumwx;
    double sumwx2;
    double sumwxy;
    double ssm;
    double intercept;
    double slope;
    double sse;
};

// Flag values of points and headers.
enum : int {
    XY_INACTIVE = 42,       // '*': (flag & 42) == 42 marks an inactive point
    XY_NEWPOINT = 32,       // ' ': an active point built by an averaging operation
    XY_EXCLUDED = 1,        // a transferred exclusion, turned inactive by CopyIncl
    XY_HDR_UNIFORM = 32,    // header: x spacing known to be uniform
    XY_HDR_NONUNIFORM = 64, // header: x spacing known to be non-uniform
    XY_HDR_UPDATED = 8,     // header: record overwritten by CFFT::Update
    XY_HDR_INVVAR = 192     // header reps: w holds inverse variances of replicate means
};

} // namespace oscilla

#endif
