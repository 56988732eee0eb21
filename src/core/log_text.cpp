#include "core/log_text.h"

log_text_t utm_app_log_text(const char *text) {
    constexpr char digits[] = "0123456789ABCDEF";
    log_text_t shown;
    char *to = shown.text;
    const char *const end = shown.text + sizeof(shown.text) - sizeof("\\xHH");
    for (; *text != '\0' && to <= end; ++text) {
        const unsigned char byte = static_cast<unsigned char>(*text);
        if (byte >= 32 && byte != 127) {
            *to++ = *text;
            continue;
        }
        *to++ = '\\';
        *to++ = 'x';
        *to++ = digits[byte / 16];
        *to++ = digits[byte % 16];
    }
    *to = '\0';
    return shown;
}
