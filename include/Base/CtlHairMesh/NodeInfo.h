#pragma once

class INode;

/// Base of the records that a hair object keeps for the scene nodes it refers to.
class INodeInfo {
public:
    virtual ~INodeInfo() = default;
    /// The node the record is about; may be null.
    virtual INode* GetNode() = 0;
};
