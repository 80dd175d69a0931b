# Cameras behind serial lines and frame grabbers take what POSIX systems have.
