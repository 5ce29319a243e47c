-- The session's log, as the scenarios read it.
local log = {}

-- The last line logged so far, or nil.
function log.last()
	local lines = headless.log_lines()
	return lines[#lines]
end

return log
