/// \file
/// Identifiers of the library's own classes, for `CreateAs` and the class store: `classid::CWavDecoder` names
/// the class registered as "vorlund::CWavDecoder".
#pragma once

#include <vorlund/Id.h>

namespace vorlund::classid {

inline constexpr CId CAppendingRos{0xA6EE19E9, 0xF32146E2, 0xAFA21EFF, 0xA0930554};
inline constexpr CId CAudioClip{0xC3AE26D0, 0xD9184CA0, 0xADDBAFA6, 0xF6EBBFF7};
inline constexpr CId CAudioDevice{0x9DF8979E, 0x14424383, 0xA3164F6A, 0xD110B15C};
inline constexpr CId CAudioPcmChannelNumberConverter{0xA95E1C18, 0xDE2A4C17, 0xBE5566E2, 0x1DED4C07};
inline constexpr CId CAudioPcmSampleFormatConverter{0xC78D926E, 0x26B94789, 0x86D3132C, 0xEC7ED1FF};
inline constexpr CId CBitmap{0x6921B3C6, 0x45054D41, 0x90271F9C, 0x039F8768};
inline constexpr CId CCbVideoSource{0xA85B8713, 0xF0CF421C, 0xB374BA80, 0x329D801D};
inline constexpr CId CDevice{0x89473E57, 0xFE5D4DBA, 0xA79AB5E1, 0x098F2C75};
inline constexpr CId CFile{0x918E84D7, 0x03CA40C4, 0xA1A93E28, 0xB0827B88};
inline constexpr CId CFileInputStream{0x998C022A, 0xA4F74171, 0xB92B4A73, 0x71BD8306};
inline constexpr CId CFileOutputStream{0x039A99B9, 0x85864E63, 0xA613F839, 0xF0D8B4AD};
inline constexpr CId CFolder{0x60E82CA0, 0x89794B06, 0x90E37D7E, 0x529AB2EB};
inline constexpr CId CInputStream{0x0B43B630, 0xECE04EAE, 0x86EACA3C, 0xC4FEB484};
inline constexpr CId CInputStreamFilter{0x8F2C8042, 0x1CB24F9B, 0x9E975CA4, 0xC36D6AFA};
inline constexpr CId CMediaControl{0x7F82DC9F, 0x9AF44946, 0x96F486E1, 0xB76D06AC};
inline constexpr CId CMediaSample{0xDFAB86E9, 0x794A4EAE, 0x9FE1B079, 0x0B782B82};
inline constexpr CId CObject{0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063};
inline constexpr CId CObjectEnumerator{0x4FA2C23A, 0xCE0A41A5, 0x9AE0AA31, 0x2855BE59};
inline constexpr CId CObjectList{0x60250972, 0x26DD46ED, 0x84B198C5, 0x0E29EEE3};
inline constexpr CId CObjectListener{0x8E81F646, 0xB7F84058, 0x921DC7DD, 0xB602DD7D};
inline constexpr CId COutputStream{0x0FE0B4F4, 0x071C48C9, 0xA85231DC, 0x6B8A101A};
inline constexpr CId COutputStreamFilter{0x9AAE6F8D, 0xB1E64389, 0xB02314BC, 0x015038DC};
inline constexpr CId CPlasmaVideoGenerator{0x7C9D79C6, 0x9C43493B, 0xA216D830, 0x03F13ADF};
inline constexpr CId CPropertyPage{0xF8D1B152, 0x0DB64B2D, 0x8AFDCAF4, 0x027A31F5};
inline constexpr CId CPtrObject{0x40EC1DA0, 0x5CD84282, 0x991AA699, 0x0DC62B23};
inline constexpr CId CPushObjectEnumerator{0x766D7166, 0xF2084704, 0x9CCF634A, 0xDDBF1B96};
inline constexpr CId CRandomGenerator{0xA4116099, 0xFB8F43FD, 0xBF9EAA47, 0xF23C09F6};
inline constexpr CId CResource{0x325FFD4D, 0x37294B87, 0x8AEFAC12, 0xC9276B34};
inline constexpr CId CResourceIs{0xB229402C, 0xFDC14470, 0x90860D53, 0x765A0AB2};
inline constexpr CId CResourceOs{0xB030E31E, 0x1FD74762, 0x87A083E7, 0x2D03271B};
inline constexpr CId CSetFormatIsf{0x14A97652, 0xF7A748C9, 0x966907FC, 0xE273A999};
inline constexpr CId CStringObject{0xAEA98BB2, 0x6A014A57, 0xB1543E5D, 0x9FFAC41A};
inline constexpr CId CSwBufferMediaSample{0xA5D82DFB, 0x331F4063, 0x83FDCE8D, 0xFF73544F};
inline constexpr CId CVideoClip{0x6E90B6D4, 0xBA60479E, 0x908CDF74, 0xEBA32064};
inline constexpr CId CVideoDevice{0xF81C0DB0, 0x960349F4, 0x8C229044, 0xA67DD19C};
inline constexpr CId CVideoWindow{0xDF555AEF, 0xC1714B6D, 0x855F4D5A, 0x280502C3};
inline constexpr CId CWavChunkDecoder{0x9196075E, 0x9CA345E2, 0x824A41F7, 0x414D7EE9};
inline constexpr CId CWavDecoder{0x521C3225, 0x5C8F4D10, 0xBE3A0AB0, 0x62E4711B};

} // namespace vorlund::classid
