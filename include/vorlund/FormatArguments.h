/// \file
/// Objects among the arguments of a printf-style call. A C argument list carries numbers and pointers; GCC
/// passes an object as the address of a copy, without a word, and its bytes would be printed as a text. So
/// `CString`s are passed as their texts, and a call with any other object does not compile.
#pragma once

#include <type_traits>

namespace vorlund {

class CString;

namespace formatting {

template <class T> inline constexpr bool kIsText = std::is_same_v<T, CString>;
template <class T>
inline constexpr bool kIsOtherObject = !kIsText<T> && (std::is_class_v<T> || std::is_union_v<T>);

/// Arguments with texts among them that can be passed.
template <class... T>
concept TextArguments = (kIsText<T> || ...) && !(kIsOtherObject<T> || ...);
/// Arguments that cannot.
template <class... T>
concept ObjectArguments = (kIsOtherObject<T> || ...);

/// What is passed for an argument. The text lives as long as its object.
template <class T> auto Argument(const T& argument) {
    if constexpr (kIsText<T>)
        return argument.GetBuffer();
    else
        return argument;
}

} // namespace formatting
} // namespace vorlund
