// Readable names of the window codes, for hosts that take a window by name.
#ifndef OSCILLA_WINDOWS_WINDOW_NAMES_H
#define OSCILLA_WINDOWS_WINDOW_NAMES_H

namespace oscilla {

struct WindowName {
    int code;
    const char *name;
    const char *description;
    int shaped; // 1 if the shape parameter counts
};

// The named windows, by ascending code. Codes without an entry still exist:
// hosts may pass any code from 0 to 44.
extern const WindowName WINDOW_NAMES[];
extern const int WINDOW_NAME_COUNT;

// The code of a name (case-sensitive), or -1.
int WindowCodeByName(const char *name);
// The entry of a code, or null.
const WindowName *FindWindowName(int code);

} // namespace oscilla

#endif
