#pragma once

#include <cstdlib>
#include <memory>

namespace recorder {

struct FreeXcbReply {
    void operator()(void* reply) const { std::free(reply); }
};

// xcb hands out replies and errors allocated with malloc.
template <class T>
using XcbReply = std::unique_ptr<T, FreeXcbReply>;

} // namespace recorder
