#include "RenderingBase/host/app/KVRCommand.h"

#include <glib.h>

KVRCommand::KVRCommand(KVRCommand* parent, const char* name)
    : m_parent(parent), m_name(name ? name : "") {}

KVRCommand::~KVRCommand() = default;

void KVRCommand::RequestDelayedDestruction() {
    g_idle_add(
        [](gpointer command) -> gboolean {
            static_cast<KVRCommand*>(command)->Release();
            return G_SOURCE_REMOVE;
        },
        this);
}
