// SPDX-License-Identifier: MIT
// What the test of the documents reads out of sources that it cannot include: the interface
// definition, plain C headers, enumerations as names.
#ifndef KORA4_TESTS_CHECKS_DOCUMENTS_SOURCES_H
#define KORA4_TESTS_CHECKS_DOCUMENTS_SOURCES_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kora4::test {

// A name with the number that a source gives it.
struct NamedNumber {
    std::string name;
    std::uint32_t number;
};

// The enumerators of an enumeration, in order; an initializer is a decimal or hexadecimal
// number.
std::vector<NamedNumber> EnumeratorsOf(const std::string& path, const std::string& enumName);

// `#define PREFIX... NUMBER` and `#define PREFIX... KORA4_RESULT_CODE(NUMBER)`, in order.
std::vector<NamedNumber> MacrosOf(const std::string& path, const std::string& prefix);

// A method as the interface definition declares it.
struct IdlMethod {
    std::string name;
    std::string parameters;  // "[in] LONG a, [out] BOOL *b"
};
std::vector<IdlMethod> MethodsOf(const std::string& interfaceName);

// The union member of each technology: "ULONG" and "m_volumeSlider" of "eVolumeLeveler".
std::map<std::string, std::pair<std::string, std::string>> PatchValueMembers();

// Interfaces, classes and the type library with their GUIDs.
std::vector<std::pair<std::string, std::string>> IdlIdentifiers();

// The checks that a method of the API object makes, in their order: "argument", "initialised"
// and, of a value's record, "technology".
std::string ChecksOf(const std::string& method);

}  // namespace kora4::test

#endif  // KORA4_TESTS_CHECKS_DOCUMENTS_SOURCES_H
