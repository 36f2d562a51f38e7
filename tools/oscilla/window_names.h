// Readable names of the window codes for the command line. The library knows
// its windows by code only; labels are the host's business.
#ifndef OSCILLA_TOOLS_WINDOW_NAMES_H
#define OSCILLA_TOOLS_WINDOW_NAMES_H

namespace tool {

struct WindowName {
    int code;
    const char *name;
    const char *description;
    int shaped; // 1 if the shape parameter counts
};

// The named windows, by ascending code. Codes without an entry can still be
// given as numbers, 0 to 44.
extern const WindowName WINDOW_NAMES[];
extern const int WINDOW_NAME_COUNT;

// The entry of a code, or null.
const WindowName *FindWindowName(int code);

} // namespace tool

#endif
