#pragma once
// A value whose member converts to and from a DICOM defined term.

#include "Foundations/DataModule/Values/CodedStringTraits.h"
#include "Foundations/DataModule/Values/CoreDataType.h"

#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// CoreDataType over the enumeration E (an X::Enum) with its term conversions (CodedStringTraits<E>).
template <typename E>
class CodedStringDataType : public CoreDataType<E> {
public:
    using CoreDataType<E>::CoreDataType;

    // The member's term; member 0, out-of-range values and an empty value give fallback.
    virtual std::string Term(std::string_view fallback = {}) const {
        if (this->IsEmpty()) return std::string(fallback);
        const auto term = CodedStringTraits<E>::Term(this->value_);
        return std::string(term ? *term : fallback);
    }
    // Readable description of the member, e.g. "'CT' (Computed Tomography)".
    virtual std::string Description() const { return CodedStringTraits<E>::Description(this->value_); }
    // Set from a term; an unknown term gives member 0, which still counts as set.
    virtual void SetFromTerm(std::string_view term) { this->Set(CodedStringTraits<E>::FromTerm(term)); }
};

}  // namespace Lumivale::DataModule
