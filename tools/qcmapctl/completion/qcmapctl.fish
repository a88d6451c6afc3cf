# Completion of qcmapctl for fish. The program knows all words itself.
complete -c qcmapctl -f -a '(qcmapctl --complete (commandline -opc)[2..-1] (commandline -ct) 2>/dev/null)'
