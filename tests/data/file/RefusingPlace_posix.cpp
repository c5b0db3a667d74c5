#include "data/file/RefusingPlace.h"

namespace vorlund::test {

// The device that is always full. (A pipe without a reader would end the process by a signal.)
CRefusingPlace::CRefusingPlace() : path_(VRL_L("/dev/full")) {}

void CRefusingPlace::Refuse() {}

} // namespace vorlund::test
