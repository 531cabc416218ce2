# SPDX-License-Identifier: Apache-2.0
# GNU libiconv is no Debian package. The npm package "iconv" of this version and checksum holds GNU libiconv 1.14's
# sources under deps/libiconv. Read by script/setup, which fetches it, and by what lists the parts of our packages.
iconv_version=3.0.1
iconv_sha256=19d0c9109234dcf12796915a4a9c9496b8ecf3e0d08e4722f99b56e3d0a3dffb
