// What the ports of this system need of the layers above them: ports know no nodes.
#pragma once

namespace kx
{

// To be called once, before the first search.
void servePorts();

} // namespace kx
