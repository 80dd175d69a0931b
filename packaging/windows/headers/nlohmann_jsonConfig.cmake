# The JSON library's headers, as packaging/windows/libraries has linked them.
if(NOT TARGET nlohmann_json::nlohmann_json)
    add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
    target_include_directories(nlohmann_json::nlohmann_json SYSTEM INTERFACE "${windows_headers}")
endif()
