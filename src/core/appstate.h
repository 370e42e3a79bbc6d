#pragma once

namespace zun {

// The program's shared settings that are no business of the receiver layer:
// one instance, created at start and passed to whoever needs it.
struct AppState
{
    int tvRegion = 4;
};

} // namespace zun
