#include "util/MessageSink.h"

#include <cstdio>

namespace util {

void StandardErrorSink::Show(const QString& text) {
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
}

} // namespace util
