// The two sides of each comparison. Each function does one request's worth.
#pragma once

// Through the platform interface, as one request asks.
void RequestAnswer();    // all of it, from the module
void RequestPlatform();  // all that the module asks, without what it makes of the answers
void RequestNetwork();
void RequestStorage();
void RequestSpawn();

// The same from the kernel with nothing in between: no parsing, no allocation.
void BareAnswer();
void BareNetwork();
void BareStorage();
void BareFork();  // fork and exec, the other way to start a program
