# read_embedded_text(PATH DELIMITER MISSING_HINT OUT): reads a file that a generated C++ file embeds as the raw string
# R"DELIMITER(...)DELIMITER", stopping the build when the file is missing (MISSING_HINT says what to do) or holds
# the text that would end that raw string early.
function(read_embedded_text Path Delimiter MissingHint OutVariable)
	if(NOT EXISTS "${Path}")
		message(FATAL_ERROR "${Path} is missing${MissingHint}")
	endif()
	file(READ "${Path}" Text)
	string(FIND "${Text}" ")${Delimiter}\"" Clash)
	if(NOT Clash EQUAL -1)
		message(FATAL_ERROR "${Path} holds the text ')${Delimiter}\"', which ends the raw string that embeds it.")
	endif()
	set(${OutVariable} "${Text}" PARENT_SCOPE)
endfunction()
