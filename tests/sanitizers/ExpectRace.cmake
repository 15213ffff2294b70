# Runs the planted race (PROGRAM) and passes only if it exits non-zero
# after ThreadSanitizer reported a data race on the planted write. Part of the report is
# printed either way, so a failure shows what happened.
# The report is expected here, so it goes to stderr even where the caller collects every other
# report in files (options later in the list win).
set(ENV{TSAN_OPTIONS} "$ENV{TSAN_OPTIONS}:log_path=stderr")
execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
string(SUBSTRING "${err}" 0 4000 head)
message("exit code: ${rc}\n${head}")
if(rc EQUAL 0)
  message(FATAL_ERROR "the planted race exited 0: ThreadSanitizer did not fail it")
endif()
if(NOT err MATCHES "WARNING: ThreadSanitizer: data race")
  message(FATAL_ERROR "the planted race printed no ThreadSanitizer data race report")
endif()
if(NOT err MATCHES "plantedWrite")
  message(FATAL_ERROR "the planted race was reported, but not at the planted write")
endif()
