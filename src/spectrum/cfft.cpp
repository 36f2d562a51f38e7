// The one place where the spectrum engine is instantiated for its sources.
#include "fft/frontends_impl.h"
#include "spectrum/forward_impl.h"
#include "spectrum/output_impl.h"
#include "spectrum/stft_impl.h"

namespace oscilla {

template class BasicFFT<detail::XYSource>;

} // namespace oscilla
