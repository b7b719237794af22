// Who may do what with a file, and what is noted about it: taken over from one file to another.
#pragma once

namespace vxkrn {

/// Gives the file `to`, which nobody but its owner may use yet, the owner, mode, access control list and
/// extended attributes of `from`. Nobody gets rights to it that he had not to `from`, at any moment: what a
/// user or group loses because an owner cannot be kept is lost. Capabilities of programs are not kept, nor
/// are the set-id bits without the owner.
/// @return 0, or the errno of what could not be kept and must be
[[nodiscard]] int TakeOverAttributes(int from, int to);

}  // namespace vxkrn
