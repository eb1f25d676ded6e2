// SPDX-License-Identifier: MIT
// Type information as text, for comparison with a table.
#ifndef KORA4_TESTS_CONTRACT_TYPELIB_TYPE_TEXT_H
#define KORA4_TESTS_CONTRACT_TYPELIB_TYPE_TEXT_H

#include <oaidl.h>
#include <windows.h>

#include <string>
#include <vector>

namespace kora4::test {

// The attributes of a type, given back at the end of the scope.
class TypeAttributes {
  public:
    explicit TypeAttributes(ITypeInfo* info) : m_info(info) {
        if (FAILED(info->GetTypeAttr(&m_attributes)))
            m_attributes = nullptr;
    }
    ~TypeAttributes() {
        if (m_attributes)
            m_info->ReleaseTypeAttr(m_attributes);
    }
    TypeAttributes(const TypeAttributes&) = delete;
    TypeAttributes& operator=(const TypeAttributes&) = delete;
    const TYPEATTR* operator->() const { return m_attributes; }

  private:
    ITypeInfo* m_info;
    TYPEATTR* m_attributes = nullptr;
};

// "{...}" in capitals.
std::string TextOf(const GUID& guid);

// Index -1: the library itself.
std::string NameOf(ITypeLib* library, INT index);
std::string HelpOf(ITypeLib* library, INT index);
std::string HelpOf(ITypeInfo* info, MEMBERID member);
std::string NameOfReference(ITypeInfo* info, HREFTYPE reference);

// "I4", "UI4*", "R4[20]", "LPWSTR*" or the name of a type; "VT n" for anything unknown.
std::string TextOf(ITypeInfo* info, const TYPEDESC& type);

// The methods and constants of a type, in their order.
std::vector<MEMBERID> Members(ITypeInfo* info);

// "offset type name" for each field, "type name = value" for each constant.
std::vector<std::string> Variables(ITypeInfo* info);

// "slot name(in type name, out type name)" for each method after those of IUnknown. A method
// other than a plain COM method with an HRESULT has that in front.
std::vector<std::string> Methods(ITypeInfo* info);

}  // namespace kora4::test

#endif  // KORA4_TESTS_CONTRACT_TYPELIB_TYPE_TEXT_H
