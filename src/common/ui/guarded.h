#pragma once
// Runs a core call from a window: a failure of the store is shown through the Prompter and
// the window carries on. Replaces a try/catch around every button.
#include "common/prompter.h"
#include "common/storeerror.h"

#include <optional>
#include <type_traits>

namespace tarvik {

namespace detail {
template <class T> struct IsOptional : std::false_type {};
template <class T> struct IsOptional<std::optional<T>> : std::true_type {};
} // namespace detail

void showStoreError(Prompter& prompter, const StoreError& error);

// void call: true when it ran. bool or std::optional result: that result, false or nullopt
// when it failed. Any other result T: std::optional<T>.
template <class F>
auto runGuarded(Prompter& prompter, F&& call)
{
    using R = std::invoke_result_t<F>;
    if constexpr (std::is_void_v<R>) {
        try {
            call();
            return true;
        } catch (const StoreError& error) {
            showStoreError(prompter, error);
            return false;
        }
    } else if constexpr (std::is_same_v<R, bool> || detail::IsOptional<R>::value) {
        try {
            return R(call());
        } catch (const StoreError& error) {
            showStoreError(prompter, error);
            return R{};
        }
    } else {
        try {
            return std::optional<R>(call());
        } catch (const StoreError& error) {
            showStoreError(prompter, error);
            return std::optional<R>();
        }
    }
}

} // namespace tarvik
