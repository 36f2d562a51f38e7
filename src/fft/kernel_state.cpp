#include "fft/kernel_state.h"

#include <cstdlib>

namespace oscilla {
namespace detail {

KernelState *kernel_state(KernelEnv &env)
{
    if (!env.state)
        env.state = static_cast<KernelState *>(std::calloc(1, sizeof(KernelState)));
    return env.state;
}

void chirp_free(KernelState *s)
{
    std::free(s->czC);
    std::free(s->czV);
    std::free(s->czY);
    s->czC = s->czV = s->czY = nullptr;
    s->czN = s->czL = 0;
}

void kernel_state_free(KernelState *&state)
{
    if (!state)
        return;
    std::free(state->tmp0);
    std::free(state->tmp1);
    std::free(state->tmp2);
    std::free(state->tmp3);
    std::free(state->perm);
    chirp_free(state);
    std::free(state->gzRe);
    std::free(state->gzIm);
    std::free(state);
    state = nullptr;
}

} // namespace detail
} // namespace oscilla
