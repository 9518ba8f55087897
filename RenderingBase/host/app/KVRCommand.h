#pragma once

/// @file  Commands: the objects through which an application acts over time.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRString.h"
#include "RenderingBase/host/modeler/KVRClass.h"

/// The base of commands.
/// Threads: those of the interactive thread. Lifetime: counted.
class KVR_EXPORT KVRCommand : public KVRClass<"KVRCommand"> {
public:
    /// @param parent  What the command belongs to, not counted; it must live longer. May be null.
    /// @param name    May be null, for none.
    explicit KVRCommand(KVRCommand* parent = nullptr, const char* name = nullptr);
    KVRCommand(const KVRCommand&) = delete;
    KVRCommand& operator=(const KVRCommand&) = delete;
    ~KVRCommand() override;

    KVRCommand* GetParent() const { return m_parent; }
    const char* GetName() const { return m_name.CastToCharPtr(); }  ///< "" without a name.

    /// Gives up the maker's reference when the main loop is idle next, so that a command can end
    /// itself from within its own operations.
    virtual void RequestDelayedDestruction();

private:
    KVRCommand* m_parent;
    KVRString m_name;
};
