// Where a fuzz run may write: a temporary directory made for the run, which is
// the current directory, HOME, TEMP and the folder of the registry store, and
// is removed at the end; beside it only the folders that libFuzzer itself
// writes to (artifacts, the corpus). Everything else on the file system is
// read-only to the process, and it may open no network connection, whatever
// the functions under test are asked to do (Landlock; where the kernel lacks
// it the run says so and has only the redirections). No file may grow beyond
// 64 MiB, and what one input wrote is gone before the next, so that a run of
// millions of inputs never fills the disk.
#pragma once

#include <vector>

// Called before libFuzzer reads its arguments: the paths among them are made
// absolute, as the current directory becomes the run's.
void enterSandbox(int argc, char** argv);

// Called as each input starts: the standard streams are the run's again.
void startInput();
// The descriptors of files in the run's directory that the calls opened and
// left open (the registry store's aside), to be closed before the next input:
// over millions of inputs they would reach the process's limit.
std::vector<int> filesLeftOpen();
// Empties the run's directory of what the last input wrote.
void clearRunDirectory();
