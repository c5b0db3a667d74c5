/// \file
/// Wine has the calls by which Windows isolates a process, and keeps nothing from it.
#pragma once

namespace vorlund::test {

bool IsWine();

} // namespace vorlund::test
