# Makes a source file of the report's page: its style and scripts are put into page.html where it says @style@, @layout@
# and @script@, and @data@ is where the program puts its data. The page's policy names style and scripts by their
# hashes.
set(tov_report_page ${PROJECT_BINARY_DIR}/src/client_report_page.cpp)

# What the scripts are made of, in their order.
set(tov_page_layout dagre/LICENSE.js dagre/dagre.min.js)
set(tov_page_script data.js elements.js changes.js table.js diagram.js search.js views.js main.js)

# A hash as the policy wants it: the bytes of hexadecimal digits in base 64. Of 32 bytes the last two stand alone.
function(tov_base64 hex result)
    set(digits ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
    set(text "")
    foreach(place RANGE 0 63 6)
        string(SUBSTRING "${hex}00" ${place} 6 three_bytes)
        math(EXPR bits "0x${three_bytes}")
        foreach(shift 18 12 6 0)
            math(EXPR digit "(${bits} >> ${shift}) & 63")
            string(SUBSTRING ${digits} ${digit} 1 letter)
            string(APPEND text ${letter})
        endforeach()
    endforeach()
    string(REGEX REPLACE ".$" "=" text ${text})
    set(${result} ${text} PARENT_SCOPE)
endfunction()

# Reads files after one another into a variable, and their hash into another one.
function(tov_read_page_part part)
    set(whole "")
    foreach(file IN LISTS ARGN)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/${file})
        file(READ ${CMAKE_CURRENT_LIST_DIR}/${file} content)
        string(APPEND whole "${content}")
    endforeach()
    string(SHA256 hex "${whole}")
    tov_base64(${hex} hash)
    set(tov_page_${part} "${whole}" PARENT_SCOPE)
    set(tov_page_${part}_hash "${hash}" PARENT_SCOPE)
endfunction()

tov_read_page_part(html page.html)
tov_read_page_part(style page.css)
tov_read_page_part(layout ${tov_page_layout})
tov_read_page_part(script ${tov_page_script})
foreach(part style layout script)
    string(REPLACE "@${part}_hash@" "${tov_page_${part}_hash}" tov_page_html "${tov_page_html}")
endforeach()
# A compiler need not take a string of more than 65,536 bytes, so each part is one of its own.
set(next ")page\",\n    R\"page(")
string(REPLACE "@data@" "${next}" tov_page_html "${tov_page_html}")
foreach(part style layout script)
    set(content "${tov_page_${part}}")
    if(part STREQUAL style)
        string(REPLACE "@style@" "${content}" tov_page_html "${tov_page_html}")
    else()
        string(REPLACE "@${part}@" "${next}${content}${next}" tov_page_html "${tov_page_html}")
    endif()
endforeach()
file(CONFIGURE OUTPUT ${tov_report_page} @ONLY CONTENT
"#include \"report/client_report_page.hpp\"
const char *const client_report_page[] = {R\"page(@tov_page_html@)page\"};
const size_t client_report_page_count = sizeof client_report_page / sizeof *client_report_page;
")
