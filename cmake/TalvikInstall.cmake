# What is installed, and the packages.
