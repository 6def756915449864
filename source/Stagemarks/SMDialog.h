// SMDialog: the plug-in's one dialog and everything that it does. It keeps copies of the active
// document's three stores, taken anew at the start of each operation and written back whole, and
// work containers that a recording fills; it owns nothing in the scene. Main thread.
//
// How to read it: an event arrives in Command, which runs one of the operations below. They are
// ordered as an element lives: recorded, recalled, edited, exported. Each section names the folder
// that implements it. The private part has the same sections with their single steps, then the
// state. "Element" is the word for one Stagemark throughout, "checked" means the rows with a check
// mark. An operation that answers a Bool answers false when it could not begin or stopped half-way;
// what it wrote until then stays.
#pragma once

#include <array>

#include "source/Stagemarks/Host.h"
#include "source/Stagemarks/keys/Options.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "source/Stagemarks/keys/TagTypes.h"
#include "source/Stagemarks/recording/Records.h"

namespace stagemarks {

class ExportPlaces;

class SMDialog : public GeDialog {
 public:
  SMDialog();
  ~SMDialog() override;

  // --- Events of the host (dialog/).
  // Builds gadgets and menus; sets their first values and fills the list.
  Bool CreateLayout() override;
  Bool InitValues() override;
  // A change of the active document: default image, list and options anew. Always true.
  Bool CoreMessage(LONG id, const BaseContainer& msg) override;
  // Every button, field, row and menu entry: reads the fields, then only dispatches. False without
  // a document, and for a recording that was refused.
  Bool Command(LONG id, const BaseContainer& msg) override;
  LONG Message(const BaseContainer& msg, BaseContainer& result) override;

  // --- Identity (store/). They read the dialog's copies of the stores, which the caller has
  // refreshed. The lowest ID that nothing or an emptied entry is stored under.
  LONG GetFirstAvailableID() const;
  // The ID of the element with that name; 0, which may be another element's, when it is not found.
  LONG GetStagemarkID(const String& name) const;
  // Whether an element has that name.
  Bool CheckForDupSMNames(const String& name) const;

  // --- Recording (recording/): each fills its work container from the active document; false
  // without one. What the container held beyond that stays in it.
  // Puts a copy of the active render settings, named after the element, second into the document's
  // list.
  Bool RecordRenderSettings();
  // Every object's switches and the tags that the options ask for.
  Bool RecordObjectAndTagSettings();
  // Records `op`, its tags, its subtree and its following siblings in pre-order. Null records
  // nothing.
  void LoopThroughOM(BaseDocument* doc, BaseObject* op);
  // The tags of one object. Always true.
  Bool RecordTags(BaseObject* op);
  // Contents of a tag record, without the link to the tag; own ID 0 or that of the tag's data.
  BaseContainer GetTtextureSettings(BaseTag* tag) const;
  BaseContainer GetTgenericSettings(BaseTag* tag) const;
  BaseContainer GetTcompositingSettings(BaseTag* tag) const;
  // The one of the three that a tag type asks for.
  BaseContainer CaptureTag(BaseTag* tag, Capture capture) const;
  // Records the camera that the render view looks through; an empty link for none, and, with false,
  // where the option is off.
  Bool RecordCameraSettings();
  Bool RecordLayerSettings();
  // Records `layer`, its following siblings and all below them in pre-order. Null records nothing.
  void LoopThroughLayers(BaseDocument* doc, GeListNode* layer);
  // The moment, in local time. Always true.
  Bool RecordDateTime();
  // Links to the selected layers of the active document under keys 0, 1, 2 ... in pre-order.
  BaseContainer GetSelectedLayers() const;

  // --- Recall (recall/): false without an active document.
  // The element of that name, as far as the options ask for it, as one undo group.
  Bool LoadStagemark(const String& name);
  // One part of an element record each; they add undo entries to the open group. What the record
  // links to and is gone is passed over.
  Bool LoadRenderSettings(const BaseContainer& record);
  Bool LoadObjectAndTagSettings(const BaseContainer& record);
  Bool LoadCameraSettings(const BaseContainer& record);
  Bool LoadLayerSettings(const BaseContainer& record);

  // --- Matching (recall/). Whether an element record holds an item; links to the active document's
  // items that it does not hold, under keys 0, 1, 2 ... in pre-order.
  Bool SearchElementForObject(BaseContainer* element, BaseObject* op) const;
  Bool SearchElementForTag(BaseContainer* element, BaseTag* tag) const;
  Bool SearchElementForLayer(BaseContainer* element, LayerObject* layer) const;
  BaseContainer GetNewObjects(BaseContainer* element) const;
  BaseContainer GetNewTags(BaseContainer* element) const;
  BaseContainer GetNewLayers(BaseContainer* element) const;

  // --- Bulk edits (bulk/): on the checked elements of the active document, in its stores in place.
  // They stop at the first element that is not found or lacks the part in question. The options
  // have no say, and nothing can be undone. Appends the scene's items that an element does not
  // hold; changes none that it holds.
  Bool UpdateCheckedElements();
  // Writes the present state of the selected items over what is recorded of them, or appends it.
  Bool SetObjectsOnCheckedElements();
  Bool SetTagsOnCheckedElements();
  Bool SetLayersOnCheckedElements();
  // Makes the active object, which has to be a camera, the elements' camera.
  Bool SetCameraOnCheckedElements();
  // Removes one element with its render settings copy and its preview; false without a document.
  Bool DeleteStagemark(const String& name);
  void DeleteCheckedElements();
  // Takes the stores out of the document, too, and offers to delete the folder with the previews.
  void DeleteAllElements();

  // --- Export (export/): one scene file per checked name, made from a copy of the active document.
  // The button: asks what it needs and calls the layout that the combo box names.
  void GenerateFiles();
  // The four layouts. False when nothing could begin, or an element's folder could not be made;
  // true also after a save that failed, of which the user was told.
  Bool GenerateSaveFile(const BaseContainer& checked, const Filename& folder);
  Bool GenerateSaveFileFolders(const BaseContainer& checked, const Filename& folder);
  Bool GenerateSaveProject(const BaseContainer& checked, const Filename& folder);
  Bool GenerateSaveProjectOneFolder(const BaseContainer& checked, const Filename& folder);
  // Texture references cut down to bare file names: of one shader, answering the name that is left;
  // of a shader, a node or an object with all that follows and lies below it; of the whole
  // document. False where there is nothing to walk through.
  String ExtractTexturePath(BaseShader* shader);
  void LoopThroughShader(BaseShader* shader);
  Bool LoopThroughXpresso(GvNode* node);
  void LoopThroughOMStrip(BaseObject* op);
  Bool StripObjects();
  Bool StripMaterials();
  Bool StripAllTexturePaths();
  // Deletes the materials that no element's texture tag refers to, as one undo group. False when
  // nothing was looked at.
  Bool CleanMEdit();

  // --- Previews (previews/).
  // The folder beside the active document's file; relative for a document never saved, empty path
  // without one.
  Filename GetSMfilePath() const;
  Filename GetPreviewImage(const String& name) const;
  // Renders the element being recorded into `folder`; false when memory ran out.
  Bool GenerateBitmapPreview(const Filename& folder);
  // Shows the element's preview in the bitmap button, else the default image; the button does not
  // change where neither exists.
  void ShowPreview(const String& name);
  void ShowDefaultImage();

  // --- The list (dialog/).
  // Rebuilds the rows from the active document; check marks of names that stay are kept, the
  // selection goes.
  void UpdateSMList();
  // Name of the selected row; empty unless exactly one is selected.
  String GetListSelection() const;
  // Names of the checked rows under their row numbers, in list order.
  BaseContainer GetCheckedElements() const;

  // --- Options (dialog/).
  // Takes the flags and the menu's marks from the document's own choice, else from the user's
  // defaults.
  void UpdateSMPreferences();
  Bool IsOn(Option option) const { return options_[IndexOf(option)] == 1; }

 private:
  // How a menu entry changes the check marks of all rows.
  enum class Checks { All, None, Inverted };

  // --- Events (dialog/): what every event begins with, and what single gadgets and entries do.
  void ReadFields();
  void ShowSelected();
  // Runs what a button or menu entry stands for; nothing for an ID that stands for nothing.
  void Run(LONG id);
  void LoadSelected();
  void DeleteSelected();
  void RenameSelected();
  void RenameElement(BaseDocument& doc, LONG element, const String& name);
  void SetTagsAndForget();
  void ChangeChecks(Checks checks);
  Bool ToggleOption(const OptionRow& row);
  void SaveDefaultPreferences();
  void WriteOptions(BaseContainer& target) const;
  void ShowHelp() const;
  void ShowAbout() const;

  // --- Building (dialog/): the gadgets from top to bottom, the menus, and the list store of scenes
  // that have none yet.
  void BuildElementGroups();
  void BuildRecordGroups();
  void BuildGenerateGroups();
  void BuildMenus();
  void BuildListEntries(BaseDocument& doc);

  // --- The button "Record Element" (recording/): the whole of it, and its steps in order.
  Bool RecordElement();
  void FreezeOptions(BaseDocument& doc);
  void RecordCategories();
  void AssembleElement();
  void StoreElement(BaseDocument& doc);
  Bool RecordPreview(const BaseDocument& doc);
  void ClearWorkContainers();

  // --- Bulk edits (bulk/). Appending what one element lacks: false where it has no such part.
  Bool AppendNewObjects(const BaseDocument& doc, BaseContainer& element) const;
  Bool AppendNewTags(const BaseDocument& doc, BaseContainer& element) const;
  Bool AppendNewLayers(const BaseDocument& doc, BaseContainer& element) const;
  // Frees the element's render settings copy and empties its record and list entry in place.
  void EmptyElement(BaseDocument& doc, LONG element) const;
  // As DeleteStagemark for each value of `names` in turn.
  void DeleteElements(BaseDocument& doc, const BaseContainer& names);
  void RefreshAfterDeletion(BaseDocument& doc);
  void OfferToDeleteSideFolder() const;

  // --- Export (export/).
  struct FileLayout;
  Bool Generate(const BaseContainer& checked, const Filename& folder, const FileLayout& layout);
  void GatherTextures(const BaseContainer& checked, const ExportPlaces& places,
                      const FileLayout& layout);
  Bool MakeElementFolder(const String& name, const ExportPlaces& places) const;
  Bool GenerateElement(BaseDocument& copy, const String& name, const ExportPlaces& places);
  void OverrideFrameRange(RenderData& settings) const;

  // --- The stores (store/): records and list entries copied from the document, and written back
  // whole.
  void RefreshStores(const BaseDocument& doc);
  void WriteStores(BaseDocument& doc) const;
  // Sets the current flag on one element and clears it on the others, in place.
  void MarkCurrent(BaseDocument& doc, LONG element);
  // The record of the element with the current flag, from the copies; empty where there is none.
  BaseContainer CurrentRecord() const;

  Real version_ = kVersion;
  SimpleListView list_;
  BitmapButtonCustomGui* previewButton_ = nullptr;  // owned by the dialog's layout
  String selectedName_;

  BaseContainer recordStore_;  // copies of the document's sub-containers
  BaseContainer listStore_;

  String elementName_;  // of the element being recorded
  BaseContainer dateBc_;
  BaseContainer recordBc_;  // record and list entry under construction
  BaseContainer listEntryBc_;
  BaseContainer renderBc_;  // the record's parts; only the Load button empties them
  BaseContainer layersBc_;
  BaseContainer objectsBc_;
  BaseContainer cameraBc_;
  BaseContainer tagsBc_;
  BaseContainer textureRecord_;  // written over for each texture tag
  RememberedTags compositingTags_{Capture::Compositing};
  RememberedTags genericTags_{Capture::Generic};

  LONG frameFrom_ = 0;
  LONG frameTo_ = 0;

  BaseContainer preferences_;         // copy of the document's choice
  BaseContainer defaultPreferences_;  // the user's, as the host keeps them
  LONG preferencesSaved_ = 0;
  std::array<LONG, kOptions.size()> options_{};  // 1: on

  LONG elementId_ = 0;
  LONG generatePreview_ = 0;
  LONG changeFrameRange_ = 0;

  LONG objectCount_ = 0;  // running indices of one recording
  LONG tagCount_ = 0;
  LONG layerCount_ = 0;
};

}  // namespace stagemarks
