#pragma once

#include <type_traits>
#include <utility>

/// Runs \a body and answers \a fallback when it throws.
///
/// The library reports failures by result only. Exported operations that allocate in proportion to what
/// they are given, or that run a caller's function, do their work inside this, so that neither a failed
/// allocation nor a throwing callback crosses the library's boundary.
template <typename Body, typename Result = std::invoke_result_t<Body>>
Result guarded(Body&& body, Result fallback = Result()) noexcept
{
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return fallback;
    }
}

/// The same for a \a body that gives no result.
template <typename Body>
requires std::is_void_v<std::invoke_result_t<Body>>
void guarded(Body&& body) noexcept
{
    try {
        std::forward<Body>(body)();
    } catch (...) {
        return;
    }
}
