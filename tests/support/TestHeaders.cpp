// SPDX-License-Identifier: Apache-2.0
// Nothing: it belongs to the headers that the tests have in common.
