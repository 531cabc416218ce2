// SPDX-License-Identifier: Apache-2.0
// What a host has beside the kernel: the C++ library.
int main() { return 0; }
