// The choice of the form for this processor.

#include "text/utf8_vectors.h"

#include <algorithm>

std::array<const Utf8Vectors*, 3> Utf8VectorForms() noexcept { return {Utf8VectorsAvx2(), Utf8VectorsNeon(), nullptr}; }

const Utf8Vectors* BestUtf8Vectors() noexcept {
  const auto forms = Utf8VectorForms();
  return *std::find_if(forms.begin(), forms.end() - 1, [](const Utf8Vectors* form) { return form != nullptr; });
}
