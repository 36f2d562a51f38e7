// Umbrella header: every public header of the library.
#ifndef OSCILLA_OSCILLA_H
#define OSCILLA_OSCILLA_H

#include "oscilla/series/complex.h"
#include "oscilla/series/cxy.h"
#include "oscilla/series/mathsupport.h"
#include "oscilla/series/xy.h"

#include "oscilla/fft/cfft4.h"
#include "oscilla/fft/lengths.h"

#include "oscilla/windows/cwinfn.h"

#include "oscilla/spectrum/cfft.h"
#include "oscilla/spectrum/formats.h"

#include "oscilla/estimate/cscan.h"

#include "oscilla/linalg/eigensym.h"
#include "oscilla/linalg/polyroots.h"
#include "oscilla/linalg/qr.h"
#include "oscilla/linalg/solvers.h"
#include "oscilla/linalg/svd.h"

#endif
