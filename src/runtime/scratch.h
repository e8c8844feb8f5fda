// scratch.h - output files of show commands that a daemon which was killed has left behind.
#pragma once

// Remove the output files with a random number at their end that are older than ten minutes. Other programs of the web
// interface write files of the same names and read them at once; those with a fixed name are removed before each use.
void scratchFilesSweep();
