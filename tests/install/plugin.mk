# A plug-in without CMake; docs/writing-a-plugin.md explains the two variables of pkg-config.
EXTENSION ?= so
CXXFLAGS = -std=c++20 -O2
PLUGIN_CFLAGS := $(shell pkg-config --cflags vorlund) $(shell pkg-config --variable=plugin_cflags vorlund)
PLUGIN_LIBS := $(shell pkg-config --variable=plugin_libs vorlund) $(shell pkg-config --libs vorlund)

my_plugin.$(EXTENSION): Plugin.cpp
	$(CXX) $(CXXFLAGS) $(PLUGIN_CFLAGS) $< -o $@ $(PLUGIN_LIBS)
