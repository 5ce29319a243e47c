-- Never ends on its own.
while true do end
