# install rules: filled in with the packaging work
