/// \file
/// Failures that several suites meet.
#pragma once

#include <vorlund/Exception.h>

namespace vorlund::test {

namespace classstorefailures {

inline constexpr const wchar* kClassStoreFile = VRL_L("src/vorlund/api/ClassStore");
inline constexpr const wchar* kCreateObject = VRL_L("vorlund::CClassStore::CreateObject");
inline constexpr const wchar* kGetClassInfo = VRL_L("vorlund::CClassStore::GetClassInfo");
inline constexpr const wchar* kGetClass = VRL_L("vorlund::CClassStore::GetClass");
inline constexpr TFailure kCreateByIdClosed{kCreateObject, kClassStoreFile, 60, VRL_L("Not initialized")};
inline constexpr TFailure kCreateByIdNotFound{kCreateObject, kClassStoreFile, 68, VRL_L("Cannot find class")};
inline constexpr TFailure kCreateByNameClosed{kCreateObject, kClassStoreFile, 77, VRL_L("Not initialized")};
inline constexpr TFailure kCreateByNameNotFound{kCreateObject, kClassStoreFile, 85, VRL_L("")};
inline constexpr TFailure kGetByIdClosed{kGetClassInfo, kClassStoreFile, 112, VRL_L("Not initialized")};
inline constexpr TFailure kGetByIdNotFound{kGetClass, kClassStoreFile, 125, VRL_L("")};
inline constexpr TFailure kGetByNameClosed{kGetClassInfo, kClassStoreFile, 130, VRL_L("Not initialized")};
inline constexpr TFailure kGetByNameNotFound{kGetClass, kClassStoreFile, 143, VRL_L("")};
inline constexpr TFailure kRegisterClosed{VRL_L("vorlund::CClassStore::RegisterClassVrl"), kClassStoreFile,
                                          148, VRL_L("Not initialized")};
inline constexpr TFailure kNotClosed{VRL_L("vorlund::CClassStore::~CClassStore"), kClassStoreFile, 28,
                                     VRL_L("Not closed")};
inline constexpr TFailure kNoEnumerator{VRL_L("vorlund::CClassStore::EnumerateClasses"), kClassStoreFile, 160,
                                        VRL_L("Cannot create enumerator")};
inline constexpr TFailure kNoItem{VRL_L("vorlund::CClassStore::EnumerateClasses"), kClassStoreFile, 171,
                                  VRL_L("Cannot create pointer object")};

} // namespace classstorefailures

namespace counterfailures {

inline constexpr const wchar* kObjectCounterFile = VRL_L("src/vorlund/api/ObjectCounter");
inline constexpr TFailure kCreateClosed{VRL_L("vorlund::CObjectCounter::OnCreateObject"), kObjectCounterFile,
                                        111, VRL_L("Not initialized")};
inline constexpr TFailure kDestroyClosed{VRL_L("vorlund::CObjectCounter::OnDestroyObject"),
                                         kObjectCounterFile, 117, VRL_L("Not initialized")};
inline constexpr TFailure kNotClosed{VRL_L("vorlund::CObjectCounter::~CObjectCounter"), kObjectCounterFile,
                                     96, VRL_L("Not closed")};

} // namespace counterfailures

namespace lockfailures {

inline constexpr const wchar* kBinaryLock = VRL_L("vorlund::CBinaryLock::~CBinaryLock");
inline constexpr const wchar* kBinaryLockFile = VRL_L("src/vorlund/system/BinaryLock_win32");
inline constexpr TFailure kStillLocked{kBinaryLock, kBinaryLockFile, 25, VRL_L("Still locked")};
inline constexpr TFailure kNotLocked{kBinaryLock, kBinaryLockFile, 44, VRL_L("Not locked")};
inline constexpr TFailure kLockedElsewhere{kBinaryLock, kBinaryLockFile, 46,
                                           VRL_L("Locked in another thread")};

} // namespace lockfailures

namespace eventfailures {

inline constexpr const wchar* kEventFile = VRL_L("src/vorlund/system/EventWin32");
inline constexpr TFailure kWait{VRL_L("vorlund::CEvent::Wait"), kEventFile, 196, VRL_L("Timeout")};
inline constexpr TFailure kWaitAll{VRL_L("vorlund::CEvent::WaitAll"), kEventFile, 248, VRL_L("Timeout")};
inline constexpr TFailure kWaitOne{VRL_L("vorlund::CEvent::WaitOne"), kEventFile, 290, VRL_L("Timeout")};
inline constexpr TFailure kStaticWait{VRL_L("vorlund::CEvent::Wait"), kEventFile, 325, VRL_L("Timeout")};

} // namespace eventfailures

/// The reason of each has "%s" for the path.
namespace filefailures {

inline constexpr const wchar* kFileFile = VRL_L("src/vorlund/data/file/File_win32");
inline constexpr const wchar* kFolderFile = VRL_L("src/vorlund/data/file/Folder_win32");
inline constexpr const wchar* kInputFile = VRL_L("src/vorlund/data/file/FileInputStream_win32");
inline constexpr const wchar* kOutputFile = VRL_L("src/vorlund/data/file/FileOutputStream_win32");
inline constexpr TFailure kNoFile{VRL_L("vorlund::CFile::Initialize"), kFileFile, 84,
                                  VRL_L("Cannot find '%s'")};
inline constexpr TFailure kFileIsDirectory{VRL_L("vorlund::CFile::Initialize"), kFileFile, 90,
                                           VRL_L("'%s' is a directory")};
inline constexpr TFailure kNoFolder{VRL_L("vorlund::CFolder::Initialize"), kFolderFile, 128,
                                    VRL_L("Cannot find '%s'")};
inline constexpr TFailure kFolderIsNoDirectory{VRL_L("vorlund::CFolder::Initialize"), kFolderFile, 134,
                                               VRL_L("'%s' is not a directory")};
inline constexpr TFailure kCannotRead{VRL_L("vorlund::CFileInputStream::Open"), kInputFile, 62,
                                      VRL_L("Cannot open '%s' for reading")};
inline constexpr TFailure kCannotWrite{VRL_L("vorlund::CFileOutputStream::Open"), kOutputFile, 58,
                                       VRL_L("Cannot open '%s' for writing")};
inline constexpr TFailure kOutputSeekFailed{VRL_L("vorlund::CFileOutputStream::Seek"), kOutputFile, 109,
                                            VRL_L("_fseeki64 failed")};

} // namespace filefailures

namespace resourcefailures {

inline constexpr const wchar* kResourceFile = VRL_L("src/vorlund/data/resource/Resource");
inline constexpr TFailure kNothingToSaveTo{VRL_L("vorlund::CResource::Save"), kResourceFile, 289,
                                           VRL_L("Stream pointer is NULL")};
inline constexpr TFailure kFormatIsNull{VRL_L("vorlund::CResource::SetFormat"), kResourceFile, 321,
                                        VRL_L("format is NULL")};
inline constexpr TFailure kFormatLocked{VRL_L("vorlund::CResource::SetFormat"), kResourceFile, 325,
                                        VRL_L("Data format is locked")};

} // namespace resourcefailures

namespace codecstorefailures {

inline constexpr const wchar* kCodecStoreFile = VRL_L("src/vorlund/data/CodecClassStore");
inline constexpr TFailure kGetDecoderClosed{VRL_L("vorlund::CCodecClassStore::GetDecoderClassInfo"),
                                            kCodecStoreFile, 121, VRL_L("Not initialized")};
inline constexpr TFailure kCannotDecodeStream{VRL_L("vorlund::CCodecClassStore::DecodeStream"),
                                              kCodecStoreFile, 352, VRL_L("Cannot decode stream")};

} // namespace codecstorefailures

namespace devicestorefailures {

inline constexpr const wchar* kCreateDevice = VRL_L("vorlund::CDeviceClassStore::CreateDevice");
inline constexpr const wchar* kDeviceStoreFile = VRL_L("src/vorlund/devices/DeviceClassStore");
inline constexpr TFailure kCreateClosed{kCreateDevice, kDeviceStoreFile, 52, VRL_L("Not initialized")};
inline constexpr TFailure kNoClass{kCreateDevice, kDeviceStoreFile, 75, VRL_L("")};

} // namespace devicestorefailures

} // namespace vorlund::test
