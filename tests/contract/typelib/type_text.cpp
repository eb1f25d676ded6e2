// SPDX-License-Identifier: MIT
// Turns types, parameters and members of a type library into text.
#include "contract/typelib/type_text.h"

#include <wrl/client.h>

#include <map>

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

// Frees `text`.
std::string Take(BSTR text) {
    std::string narrow;
    for (UINT i = 0; i < SysStringLen(text); ++i)
        narrow += static_cast<char>(text[i]);
    SysFreeString(text);
    return narrow;
}

const std::map<VARTYPE, const char*> cTypeNames = {
    {VT_I4, "I4"},           {VT_UI4, "UI4"},           {VT_R4, "R4"},     {VT_INT, "INT"},
    {VT_UINT, "UINT"},       {VT_LPWSTR, "LPWSTR"},     {VT_BOOL, "BOOL"}, {VT_I2, "I2"},
    {VT_HRESULT, "HRESULT"}, {VT_UNKNOWN, "IUnknown*"}, {VT_VOID, "void"},
};

std::string Parameter(ITypeInfo* info, const ELEMDESC& element, BSTR name) {
    const USHORT flags = element.paramdesc.wParamFlags;
    std::string text;
    if (flags & PARAMFLAG_FIN)
        text += "in ";
    if (flags & PARAMFLAG_FOUT)
        text += "out ";
    if (flags & ~(PARAMFLAG_FIN | PARAMFLAG_FOUT))
        text += "flags " + std::to_string(flags) + " ";
    return text + TextOf(info, element.tdesc) + " " + Take(name);
}

std::string Method(ITypeInfo* info, const FUNCDESC& function) {
    std::vector<BSTR> names(static_cast<size_t>(function.cParams) + 1);
    UINT count = 0;
    info->GetNames(function.memid, names.data(), static_cast<UINT>(names.size()), &count);
    std::string text;
    if (function.funckind != FUNC_PUREVIRTUAL || function.callconv != CC_STDCALL ||
        function.elemdescFunc.tdesc.vt != VT_HRESULT)
        text += "odd ";
    const size_t slot = static_cast<size_t>(function.oVft) / sizeof(void*);
    text += std::to_string(slot) + " " + Take(names[0]) + "(";
    for (size_t i = 1; i < names.size(); ++i) {
        if (i > 1)
            text += ", ";
        text += Parameter(info, function.lprgelemdescParam[i - 1], names[i]);
    }
    return text + ")";
}

}  // namespace

std::string TextOf(const GUID& guid) {
    wchar_t wide[40];
    const int length = StringFromGUID2(guid, wide, 40);
    std::string text;
    for (int i = 0; i + 1 < length; ++i)
        text += static_cast<char>(wide[i]);
    return text;
}

std::string NameOf(ITypeLib* library, INT index) {
    BSTR name = nullptr;
    library->GetDocumentation(index, &name, nullptr, nullptr, nullptr);
    return Take(name);
}

std::string HelpOf(ITypeLib* library, INT index) {
    BSTR help = nullptr;
    library->GetDocumentation(index, nullptr, &help, nullptr, nullptr);
    return Take(help);
}

std::string HelpOf(ITypeInfo* info, MEMBERID member) {
    BSTR help = nullptr;
    info->GetDocumentation(member, nullptr, &help, nullptr, nullptr);
    return Take(help);
}

std::string NameOfReference(ITypeInfo* info, HREFTYPE reference) {
    ComPtr<ITypeInfo> target;
    if (FAILED(info->GetRefTypeInfo(reference, &target)))
        return "unresolved";
    BSTR name = nullptr;
    target->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
    return Take(name);
}

std::string TextOf(ITypeInfo* info, const TYPEDESC& type) {
    switch (type.vt) {
        case VT_PTR:
            return TextOf(info, *type.lptdesc) + "*";
        case VT_USERDEFINED:
            return NameOfReference(info, type.hreftype);
        case VT_CARRAY: {
            std::string text = TextOf(info, type.lpadesc->tdescElem);
            for (USHORT i = 0; i < type.lpadesc->cDims; ++i)
                text += "[" + std::to_string(type.lpadesc->rgbounds[i].cElements) + "]";
            return text;
        }
        default: {
            const auto found = cTypeNames.find(type.vt);
            return found != cTypeNames.end() ? found->second : "VT " + std::to_string(type.vt);
        }
    }
}

std::vector<MEMBERID> Members(ITypeInfo* info) {
    std::vector<MEMBERID> members;
    const TypeAttributes attributes(info);
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        if (SUCCEEDED(info->GetFuncDesc(i, &function))) {
            members.push_back(function->memid);
            info->ReleaseFuncDesc(function);
        }
    }
    for (UINT i = 0; i < attributes->cVars; ++i) {
        VARDESC* variable = nullptr;
        if (SUCCEEDED(info->GetVarDesc(i, &variable))) {
            members.push_back(variable->memid);
            info->ReleaseVarDesc(variable);
        }
    }
    return members;
}

std::vector<std::string> Variables(ITypeInfo* info) {
    std::vector<std::string> texts;
    const TypeAttributes attributes(info);
    for (UINT i = 0; i < attributes->cVars; ++i) {
        VARDESC* variable = nullptr;
        if (FAILED(info->GetVarDesc(i, &variable)))
            break;
        BSTR name = nullptr;
        UINT count = 0;
        info->GetNames(variable->memid, &name, 1, &count);
        const std::string declared =
            TextOf(info, variable->elemdescVar.tdesc) + " " + Take(name);
        if (variable->varkind == VAR_CONST)
            texts.push_back(declared + " = " + std::to_string(variable->lpvarValue->lVal));
        else
            texts.push_back(std::to_string(variable->oInst) + " " + declared);
        info->ReleaseVarDesc(variable);
    }
    return texts;
}

std::vector<std::string> Methods(ITypeInfo* info) {
    std::vector<std::string> texts;
    const TypeAttributes attributes(info);
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(info->GetFuncDesc(i, &function)))
            break;
        texts.push_back(Method(info, *function));
        info->ReleaseFuncDesc(function);
    }
    return texts;
}

}  // namespace kora4::test
