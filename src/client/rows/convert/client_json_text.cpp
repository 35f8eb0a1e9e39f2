#include "rows/convert/client_json_text.hpp"

#include "rows/convert/client_bytes.hpp"

void client_append_json_byte(std::string &json, char byte)
{
    static constexpr std::string_view letters = "\"\\nrt";
    static constexpr std::string_view meanings = "\"\\\n\r\t";
    const size_t place = meanings.find(byte);
    if (place != meanings.npos) {
        json.push_back('\\');
        json.push_back(letters[place]);
    } else if (static_cast<unsigned char>(byte) >= 0x20) {
        json.push_back(byte);
    } else {
        json += "\\u00";
        client_append_hex(json, {&byte, 1});
    }
}
