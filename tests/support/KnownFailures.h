/// \file
/// Failures of the stores and of the counter that suites of several folders meet.
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

} // namespace vorlund::test
