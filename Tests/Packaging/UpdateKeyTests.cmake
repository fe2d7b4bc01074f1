# Which texts configuring takes for the key that updates are checked with.
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/UpdateKey.cmake)
if(DEFINED KEY)
    vantoro_check_update_key("${KEY}" "The test")
    return()
endif()
set(good "11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=")
foreach(case
    "0|${good}" "0|AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=" "1|" "1| " "1|${good}=" "1|x${good}"
    "1|11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURp=" # bits beyond the 32 bytes
    "1|11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHUR==" "1|11qYAYKxCrfVS-7TyWQHOg7hcvPapiMlrwIaaPcHURo="
    "1|sign-update: cannot open the key file: wrong")
    string(SUBSTRING "${case}" 0 1 isRefused)
    string(SUBSTRING "${case}" 2 -1 key)
    execute_process(COMMAND ${CMAKE_COMMAND} "-DKEY=${key}" -P ${CMAKE_CURRENT_LIST_FILE}
        RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE said)
    if((result EQUAL 0) EQUAL isRefused OR (isRefused AND NOT said MATCHES "The test holds no update key"))
        message(SEND_ERROR "'${key}': ${result} ${said}")
    endif()
endforeach()
