# vantoro_check_update_key(KEY WHERE): stops where the key that updates are checked with is not 32 bytes in base64: such a
# program would look for updates and refuse every one.
function(vantoro_check_update_key key where)
    string(LENGTH "${key}" length)
    # 43 letters, of which the last holds four bits, and one that fills up.
    if(NOT length EQUAL 44 OR NOT key MATCHES "^[A-Za-z0-9+/]+[AEIMQUYcgkosw048]=$")
        message(FATAL_ERROR "${where} holds no update key (32 bytes in base64)")
    endif()
endfunction()
