#include "Utility/Utils/InnermostText.h"

#include <algorithm>

namespace DAX::Common::Utils {

std::string get_innermost_text(const std::string& diagnostic) {
    std::size_t begin = 0;
    for (const std::string mark : {"tag_errinfo_stream*] = ", "tag_errinfo_description*] = "}) {
        const auto found = diagnostic.rfind(mark);
        if (found != std::string::npos) {
            begin = std::max(begin, found + mark.size());
        }
    }
    return begin == 0 ? std::string() : diagnostic.substr(begin, diagnostic.find('\n', begin) - begin);
}

} // namespace DAX::Common::Utils
