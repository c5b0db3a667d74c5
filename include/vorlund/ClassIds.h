/// \file
/// Identifiers of the library's own classes, for `CreateAs` and the class store: `classid::CWavDecoder` names
/// the class registered as "vorlund::CWavDecoder".
#pragma once

#include <vorlund/Id.h>

namespace vorlund::classid {

inline constexpr CId CFile{0x918E84D7, 0x03CA40C4, 0xA1A93E28, 0xB0827B88};
inline constexpr CId CFileInputStream{0x998C022A, 0xA4F74171, 0xB92B4A73, 0x71BD8306};
inline constexpr CId CFileOutputStream{0x039A99B9, 0x85864E63, 0xA613F839, 0xF0D8B4AD};
inline constexpr CId CFolder{0x60E82CA0, 0x89794B06, 0x90E37D7E, 0x529AB2EB};
inline constexpr CId CInputStream{0x0B43B630, 0xECE04EAE, 0x86EACA3C, 0xC4FEB484};
inline constexpr CId CInputStreamFilter{0x8F2C8042, 0x1CB24F9B, 0x9E975CA4, 0xC36D6AFA};
inline constexpr CId CMediaSample{0xDFAB86E9, 0x794A4EAE, 0x9FE1B079, 0x0B782B82};
inline constexpr CId CObject{0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063};
inline constexpr CId CObjectEnumerator{0x4FA2C23A, 0xCE0A41A5, 0x9AE0AA31, 0x2855BE59};
inline constexpr CId CObjectList{0x60250972, 0x26DD46ED, 0x84B198C5, 0x0E29EEE3};
inline constexpr CId CObjectListener{0x8E81F646, 0xB7F84058, 0x921DC7DD, 0xB602DD7D};
inline constexpr CId COutputStream{0x0FE0B4F4, 0x071C48C9, 0xA85231DC, 0x6B8A101A};
inline constexpr CId COutputStreamFilter{0x9AAE6F8D, 0xB1E64389, 0xB02314BC, 0x015038DC};
inline constexpr CId CPtrObject{0x40EC1DA0, 0x5CD84282, 0x991AA699, 0x0DC62B23};
inline constexpr CId CPushObjectEnumerator{0x766D7166, 0xF2084704, 0x9CCF634A, 0xDDBF1B96};
inline constexpr CId CStringObject{0xAEA98BB2, 0x6A014A57, 0xB1543E5D, 0x9FFAC41A};
inline constexpr CId CSwBufferMediaSample{0xA5D82DFB, 0x331F4063, 0x83FDCE8D, 0xFF73544F};
inline constexpr CId CWavChunkDecoder{0x9196075E, 0x9CA345E2, 0x824A41F7, 0x414D7EE9};
inline constexpr CId CWavDecoder{0x521C3225, 0x5C8F4D10, 0xBE3A0AB0, 0x62E4711B};

} // namespace vorlund::classid
