# None yet: Transports_windows.cpp says so to whoever asks.
