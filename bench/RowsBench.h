// What is measured. Each prints a line a case and says whether every result was right.
#pragma once

namespace bench {

[[nodiscard]] bool MeasureDecoders(void* filter);
[[nodiscard]] bool MeasureEncoders(void* filter);

}  // namespace bench
